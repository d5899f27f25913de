// The achost script reader over any script: the front end reads it line by line from a file and
// hands out its actions until its end or its first malformed line, whose message names the line.
#include "achost/Action.hpp"
#include "achost/FrontEnd.hpp"
#include "achost/Host.hpp"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > 1 << 16)
        return 0;
    // Each line alone, as the terminal reads it.
    const std::string text(reinterpret_cast<const char*>(data), size);
    for (size_t start = 0; start <= text.size();) {
        size_t end = text.find('\n', start);
        if (end == std::string::npos)
            end = text.size();
        achost::Action action;
        std::string error;
        if (achost::ParseAction(text.substr(start, end - start), &action, &error) ==
                achost::ParseResult::Malformed &&
            error.empty())
            std::abort();
        start = end + 1;
    }
    // The whole text as a script file: an in-memory file, so no disk is touched.
    static const int fd = memfd_create("script", 0);
    if (fd < 0 || ftruncate(fd, 0) != 0 || pwrite(fd, data, size, 0) != static_cast<ssize_t>(size))
        std::abort();
    static achost::Host host{achost::HostOptions()};
    achost::ScriptFrontEnd script;
    std::string error;
    const std::string path = "/proc/self/fd/" + std::to_string(fd);
    if (!script.Open(path, &error))
        std::abort();
    achost::Action action;
    long actions = 0;
    while (script.NextAction(host, &action))
        if (++actions > static_cast<long>(size))
            std::abort();
    if (script.Malformed() && script.Failure().compare(0, path.size() + 1, path + ":") != 0)
        std::abort();
    return 0;
}
