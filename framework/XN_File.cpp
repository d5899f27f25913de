// XN_File over the host's IO::File.
#include "XN_File.hpp"

#include <memory>

namespace {

const int kSuccess = 0;
const int kNoFileOpen = 1;
const int kOtherError = 6;

// Closes the file when the scope ends, whatever path leaves it.
class ClosingFile {
public:
    explicit ClosingFile(XN_File& file) : file(file) {}
    ~ClosingFile() { file.Close(); }
    ClosingFile(const ClosingFile&) = delete;
    ClosingFile& operator=(const ClosingFile&) = delete;

private:
    XN_File& file;
};

} // namespace

int XN_File::ResultOf(GSErrCode error) {
    switch (error) {
    case NoError:
        return kSuccess;
    case IO::File::AccessDenied:
        return 2;
    case IO::File::FileNotFound:
        return 3;
    case IO::File::CreationError:
        return 4;
    case GS::IChannel::EndOfInput:
        return 5;
    default:
        return kOtherError;
    }
}

XN_File::~XN_File() {
    Close();
}

int XN_File::Open(const XN_Location& location, const XN_File_OpenMode& newMode) {
    Close();
    if (newMode < XN_File_ReadMode || newMode > XN_File_AppendMode)
        return kOtherError;
    mode = newMode;
    auto opened = std::make_unique<IO::File>(IO::Location(location),
                                             mode == XN_File_ReadMode ? IO::File::Fail : IO::File::Create);
    GSErrCode error = opened->GetStatus();
    if (error == NoError)
        error = opened->Open(static_cast<IO::File::OpenMode>(mode));
    if (error == NoError)
        file = opened.release();
    return ResultOf(error);
}

int XN_File::Close() {
    if (file == nullptr)
        return kSuccess;
    const GSErrCode error = file->Close();
    delete file;
    file = nullptr;
    return ResultOf(error);
}

int XN_File::ReadFullText(XN_String& text, bool detect, XN_String::Encoding fallback) {
    if (file == nullptr)
        return kNoFileOpen;
    USize length = 0;
    GSErrCode error = file->GetDataLength(&length);
    if (error != NoError)
        return ResultOf(error);
    std::unique_ptr<char[]> bytes(new char[length > 0 ? length : 1]);
    error = file->ReadBin(bytes.get(), length);
    if (error == NoError)
        XN_String::TextToString(text, bytes.get(), length, detect, fallback);
    return ResultOf(error);
}

int XN_File::ReadFullText(const XN_Location& location, XN_String& text, bool detect,
                          XN_String::Encoding fallback) {
    XN_File reader;
    const int opened = reader.Open(location, XN_File_ReadMode);
    if (opened != kSuccess)
        return opened;
    ClosingFile closing(reader);
    return reader.ReadFullText(text, detect, fallback);
}

int XN_File::Write(const char* bytes, unsigned long n) {
    if (file == nullptr)
        return kNoFileOpen;
    return n == 0 ? kSuccess : ResultOf(file->WriteBin(bytes, static_cast<USize>(n)));
}

int XN_File::WriteFullText(const XN_String& text, XN_String::Encoding encoding, bool writeBOM,
                           unsigned long* written) {
    if (file == nullptr)
        return kNoFileOpen;
    unsigned long markBytes = 0;
    if (writeBOM) {
        const XN_CString mark = XN_String::GetBOM(encoding);
        markBytes = mark.GetByteCount();
        if (const int result = Write(mark.Get(), markBytes))
            return result;
    }
    char* converted = nullptr;
    unsigned int convertedBytes = 0;
    if (!XN_String::XN_StringToCString(&converted, convertedBytes, encoding, text, 0, 0))
        return kOtherError;
    std::unique_ptr<char[]> owned(converted);
    unsigned long n = convertedBytes;
    while (n > 0 && converted[n - 1] == 0)
        --n;
    const int result = Write(converted, n);
    if (result == kSuccess && written != nullptr)
        *written += markBytes + n;
    return result;
}

int XN_File::WriteFullText(const XN_Location& location, const XN_String& text, XN_String::Encoding encoding,
                           bool writeBOM, bool append) {
    XN_File writer;
    const int opened = writer.Open(location, append ? XN_File_AppendMode : XN_File_WriteEmptyMode);
    if (opened != kSuccess)
        return opened;
    ClosingFile closing(writer);
    return writer.WriteFullText(text, encoding, writeBOM, nullptr);
}

int XN_File::ReadBin(const XN_Location& location, char* buffer, unsigned long* size, bool* exists,
                     const unsigned long& offset) {
    IO::File source(location, IO::File::Fail);
    if (source.GetStatus() != NoError) {
        if (exists != nullptr)
            *exists = false;
        return kSuccess;
    }
    if (exists != nullptr)
        *exists = true;
    if (size == nullptr)
        return kOtherError;
    GSErrCode error = source.Open(IO::File::ReadMode);
    UInt64 amount = *size;
    if (error == NoError && amount == 0)
        error = source.GetDataLength(&amount);
    if (error == NoError)
        error = source.Seek(IO::File::Start, static_cast<Int64>(offset));
    if (error == NoError)
        error = source.ReadBin(buffer, static_cast<USize>(amount));
    if (error == NoError)
        *size = static_cast<unsigned long>(amount);
    source.Close();
    return ResultOf(error);
}

int XN_File::WriteBin(const XN_Location& location, const char* data, long length, bool append, bool create) {
    if (!create && IO::File(location, IO::File::Fail).GetStatus() != NoError)
        return kOtherError;
    IO::File target(location, IO::File::Create);
    GSErrCode error = target.GetStatus();
    if (error == NoError)
        error = target.Open(append ? IO::File::AppendMode : IO::File::WriteEmptyMode);
    if (error == NoError && length > 0)
        error = target.WriteBin(data, static_cast<USize>(length));
    target.Close(); // what the close answers is not reported, as callers of this form have always had it
    return ResultOf(error);
}

bool XN_File::Delete(const XN_Location& location) {
    IO::Location parent(location);
    IO::Name name;
    if (parent.MoveLastLocalName(&name) != NoError)
        return false;
    IO::Folder folder(parent);
    return folder.GetStatus() == NoError && folder.Delete(name) == NoError;
}
