// achost-grc: the resource compiler run by the build. Compiles an add-on's GRC file and its icon
// images into a binary image, and writes an assembly file that embeds the image in a section of the
// add-on's shared library. An error is printed as "file:line: message" and fails the build.
//
// The text is read line by line and each resource written out as soon as it is checked, so memory
// stays near the size of the largest resource. Each output appears whole or not at all: it is
// written beside its final name and renamed over it once both are written, so a failure leaves
// neither. An unexpected failure (an exception) is printed and ends the run with exit code 2.
#include "achost/RegularFile.hpp"
#include "achost/ResourceCompiler.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <iostream>

namespace {

const char kUsage[] = "usage: achost-grc GRC --images DIR --output IMAGE --asm ASSEMBLY\n";

std::string AssemblerString(const std::string& text) {
    std::string quoted = "\"";
    for (char c : text)
        quoted += c == '"' || c == '\\' ? std::string("\\") + c : std::string(1, c);
    return quoted + "\"";
}

// A file written under a temporary name beside `path`, closed by Close and renamed over `path` by
// Commit; the temporary file is removed when it is given up.
class Output {
public:
    explicit Output(std::string path) : path(std::move(path)), temporary(this->path + ".XXXXXX") {
        fd = mkstemp(&temporary[0]);
        if (fd < 0) {
            Failed("cannot create it");
            return;
        }
        created = true;
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(fd, 0666 & ~mask); // as an ordinary new file, not mkstemp's private one
    }
    ~Output() {
        if (fd >= 0)
            close(fd);
        if (created && !committed)
            unlink(temporary.c_str());
    }
    bool Write(const std::string& bytes, off_t at = -1) {
        for (size_t done = 0; ok() && done < bytes.size();) {
            const ssize_t n =
                at < 0 ? write(fd, bytes.data() + done, bytes.size() - done)
                       : pwrite(fd, bytes.data() + done, bytes.size() - done, at + static_cast<off_t>(done));
            if (n < 0 && errno == EINTR)
                continue;
            if (n <= 0)
                return Failed("cannot write it");
            done += static_cast<size_t>(n);
        }
        return ok();
    }
    // Ends the writing: false when the temporary file does not hold everything written.
    bool Close() {
        if (fd >= 0) {
            const int closed = close(fd);
            fd = -1;
            if (closed != 0)
                Failed("cannot write it");
        }
        return created && error.empty();
    }
    bool Commit() {
        if (!Close())
            return false;
        if (rename(temporary.c_str(), path.c_str()) != 0)
            return Failed("cannot put it in place");
        committed = true;
        return true;
    }
    // Removes the file Commit put in place, when a later step of the same run failed.
    void Withdraw() {
        if (committed)
            unlink(path.c_str());
        committed = false;
    }
    bool ok() const { return fd >= 0 && error.empty(); }
    const std::string& Error() const { return error; }

private:
    bool Failed(const char* what) {
        if (error.empty())
            error = "achost-grc: " + path + ": " + what + ": " + std::strerror(errno);
        return false;
    }
    std::string path, temporary, error;
    int fd = -1;
    bool created = false, committed = false;
};

// Opens the GRC file for reading; refuses anything but a regular file, without blocking on a FIFO.
bool OpenSource(const std::string& path, std::ifstream* in, std::string* error) {
    struct stat info;
    achost::FileRefusal refusal;
    std::string reason;
    const int fd = achost::OpenRegularFile(path, &info, &refusal, &reason);
    if (fd < 0) {
        *error =
            path + ":0: " +
            (refusal == achost::FileRefusal::Folder    ? std::string("is a folder, not a resource file")
             : refusal == achost::FileRefusal::Special ? std::string("is not a regular file (a device, a "
                                                                     "FIFO or a socket)")
                                                       : "cannot read the file: " + reason);
        return false;
    }
    close(fd);
    in->open(path, std::ios::binary);
    if (!*in) {
        *error = path + ":0: cannot read the file: " + std::strerror(errno);
        return false;
    }
    return true;
}

int Run(int argc, char** argv) {
    std::string grc, images, output, assembly;
    for (int i = 1; i < argc; ++i) {
        const bool hasValue = i + 1 < argc;
        if (std::strcmp(argv[i], "--images") == 0 && hasValue)
            images = argv[++i];
        else if (std::strcmp(argv[i], "--output") == 0 && hasValue)
            output = argv[++i];
        else if (std::strcmp(argv[i], "--asm") == 0 && hasValue)
            assembly = argv[++i];
        else if (argv[i][0] != '-' && grc.empty())
            grc = argv[i];
        else {
            std::cerr << kUsage;
            return 2;
        }
    }
    if (grc.empty() || output.empty() || assembly.empty()) {
        std::cerr << kUsage;
        return 2;
    }
    std::ifstream in;
    std::string error;
    if (!OpenSource(grc, &in, &error)) {
        std::cerr << error << "\n";
        return 1;
    }
    Output image(output);
    UInt32 count = 0;
    const auto sink = [&](achost::Resource&& resource, std::string* why) {
        ++count;
        if (image.Write(achost::ImagePiece(resource)))
            return true;
        *why = image.Error();
        return false;
    };
    if (!image.Write(achost::ImageHeader(0)) ||
        !achost::CompileGrcStream(in, grc, images.empty() ? "." : images, sink, &error)) {
        std::cerr << (error.empty() ? image.Error() : error) << "\n";
        return 1;
    }
    const std::string header = achost::ImageHeader(count);
    if (!image.Write(header.substr(achost::kImageCountOffset), achost::kImageCountOffset) || !image.Close()) {
        std::cerr << image.Error() << "\n";
        return 1;
    }
    // Both outputs are written whole before either is put in place, so a failure leaves neither.
    Output embedding(assembly);
    embedding.Write(std::string("\t.section ") + achost::kResourceSectionName +
                    ",\"\",@progbits\n\t.incbin " + AssemblerString(output) +
                    "\n\t.section .note.GNU-stack,\"\",@progbits\n");
    if (!embedding.Close() || !image.Commit() || !embedding.Commit()) {
        image.Withdraw();
        std::cerr << (embedding.Error().empty() ? image.Error() : embedding.Error()) << "\n";
        return 1;
    }
    return 0;
}

} // namespace

int main(int argc, char** argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception& e) {
        std::cerr << "achost-grc: " << e.what() << "\n";
    } catch (...) {
        std::cerr << "achost-grc: an unexpected failure\n";
    }
    return 2;
}
