#include "achost/Resources.hpp"

#include <cstring>

namespace achost {

namespace {

// Image layout, all integers little-endian: "ACRS" 1, resource count, then per resource: type, id,
// header tokens, line count, per line its tokens, data. A token is kind (1 byte), line, number (8
// bytes), text. Texts and data are a 32-bit length and the bytes.
constexpr char kMagic[4] = {'A', 'C', 'R', 'S'};
constexpr UInt32 kFormatVersion = 1;

class Writer {
public:
    void U32(UInt32 v) { Raw(&v, 4); }
    void I64(Int64 v) { Raw(&v, 8); }
    void Text(const std::string& s) {
        U32(static_cast<UInt32>(s.size()));
        out += s;
    }
    void Token(const ResToken& t) {
        out += static_cast<char>(t.kind);
        U32(static_cast<UInt32>(t.line));
        I64(t.number);
        Text(t.text);
    }
    void Tokens(const std::vector<ResToken>& tokens) {
        U32(static_cast<UInt32>(tokens.size()));
        for (const auto& t : tokens)
            Token(t);
    }
    void Raw(const void* p, size_t n) { out.append(static_cast<const char*>(p), n); }
    std::string out;
};

class Reader {
public:
    explicit Reader(const std::string& image) : in(image) {}
    bool U32(UInt32* v) { return Raw(v, 4); }
    bool I64(Int64* v) { return Raw(v, 8); }
    bool Text(std::string* s) {
        UInt32 n = 0;
        if (!U32(&n) || n > in.size() - pos)
            return false;
        s->assign(in, pos, n);
        pos += n;
        return true;
    }
    bool Token(ResToken* t) {
        UInt8 kind = 0;
        UInt32 line = 0;
        if (!Raw(&kind, 1) || kind > ResToken::String || !U32(&line) || !I64(&t->number) || !Text(&t->text))
            return false;
        t->kind = static_cast<ResToken::Kind>(kind);
        t->line = static_cast<int>(line);
        return true;
    }
    bool Tokens(std::vector<ResToken>* tokens) {
        UInt32 n = 0;
        if (!U32(&n) || n > in.size() - pos)
            return false;
        tokens->resize(n);
        for (auto& t : *tokens)
            if (!Token(&t))
                return false;
        return true;
    }
    bool Raw(void* p, size_t n) {
        if (n > in.size() - pos)
            return false;
        std::memcpy(p, in.data() + pos, n);
        pos += n;
        return true;
    }
    bool AtEnd() const { return pos == in.size(); }

private:
    const std::string& in;
    size_t pos = 0;
};

bool ReadResource(Reader& r, Resource* res) {
    UInt32 type = 0, lines = 0;
    Int64 id = 0;
    if (!r.U32(&type) || !r.I64(&id) || !r.Tokens(&res->header) || !r.U32(&lines))
        return false;
    res->type = type;
    res->id = static_cast<GSResID>(id);
    for (UInt32 k = 0; k < lines; ++k) {
        res->body.emplace_back();
        if (!r.Tokens(&res->body.back()))
            return false;
    }
    return r.Text(&res->data);
}

} // namespace

std::string ResTypeName(GSResType type) {
    std::string name(4, ' ');
    for (int i = 0; i < 4; ++i)
        name[i] = static_cast<char>((type >> (24 - 8 * i)) & 0xFF);
    return name;
}

bool ResourceSet::Add(Resource resource) {
    const auto key = std::make_pair(resource.type, resource.id);
    return resources.emplace(key, std::move(resource)).second;
}

const Resource* ResourceSet::Find(GSResType type, GSResID id) const {
    const auto found = resources.find(std::make_pair(type, id));
    return found == resources.end() ? nullptr : &found->second;
}

std::optional<std::vector<std::string>> ResourceSet::Strings(GSResID id) const {
    const Resource* list = Find(ResType("STR#"), id);
    if (list == nullptr)
        return std::nullopt;
    std::vector<std::string> strings;
    for (const auto& line : list->body)
        for (const auto& token : line)
            strings.push_back(token.text);
    return strings;
}

std::optional<std::string> ResourceSet::String(GSResID id, Int32 index) const {
    const auto strings = Strings(id);
    if (!strings || index < 1 || static_cast<size_t>(index) > strings->size())
        return std::nullopt;
    return (*strings)[static_cast<size_t>(index) - 1];
}

std::string ImageHeader(UInt32 count) {
    Writer w;
    w.Raw(kMagic, 4);
    w.U32(kFormatVersion);
    w.U32(count);
    return w.out;
}

std::string ImagePiece(const Resource& res) {
    Writer w;
    w.U32(res.type);
    w.I64(res.id);
    w.Tokens(res.header);
    w.U32(static_cast<UInt32>(res.body.size()));
    for (const auto& line : res.body)
        w.Tokens(line);
    w.Text(res.data);
    return w.out;
}

std::string ResourceSet::ToImage() const {
    std::string image = ImageHeader(static_cast<UInt32>(resources.size()));
    for (const auto& entry : resources)
        image += ImagePiece(entry.second);
    return image;
}

bool ResourceSet::FromImage(const std::string& image, ResourceSet* result, std::string* problem) {
    std::string ignored;
    std::string& why = problem != nullptr ? *problem : ignored;
    why = "the resource image is truncated or not one this host writes";
    Reader r(image);
    char magic[4] = {};
    UInt32 version = 0, count = 0;
    if (!r.Raw(magic, 4) || std::memcmp(magic, kMagic, 4) != 0 || !r.U32(&version) ||
        version != kFormatVersion || !r.U32(&count))
        return false;
    ResourceSet set;
    for (UInt32 k = 0; k < count; ++k) {
        Resource res;
        if (!ReadResource(r, &res))
            return false;
        ResourceProblem broken;
        const std::string name = "'" + ResTypeName(res.type) + "' " + std::to_string(res.id);
        if (!CheckResource(res, &broken)) {
            why = name + (broken.line > 0 ? " (line " + std::to_string(broken.line) + ")" : "") + ": " +
                  broken.message;
            return false;
        }
        if (!set.Add(std::move(res))) {
            why = name + " is there twice";
            return false;
        }
    }
    if (!r.AtEnd())
        return false;
    why.clear();
    *result = std::move(set);
    return true;
}

} // namespace achost
