// ovo hexdump: a file, or standard input, as the library's logs show byte traffic.
#include "tool.h"

#include <ovo/strings.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

namespace ovo_tool {
namespace {

const char hexdumpHelp[] =
    "usage: ovo hexdump [OPTIONS] [FILE]\n"
    "Shows FILE (standard input without one, or with -) as hex and text, 16 bytes a line.\n"
    "examples: ovo hexdump /bin/true | head\n"
    "          printf 'ATR' | ovo hexdump\n";

const std::size_t chunkSize = 4096; // a multiple of 16: no line straddles two chunks

} // namespace

int hexdumpCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(hexdumpHelp))
        return 0;
    if (line.words().size() > 1)
        throw UsageError("ovo hexdump takes one file at most; see ovo hexdump --help");
    const std::string path = line.words().empty() ? "-" : line.words()[0];
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.hexdump");
    std::ifstream file;
    std::istream* in = &std::cin;
    if (path != "-") {
        file.open(path, std::ios::binary);
        if (!file)
            throw Failure("cannot open '" + path + "': " + std::strerror(errno));
        in = &file;
    }
    log.info(ovo::format("reading %s", path == "-" ? "standard input" : path.c_str()));
    Bytes chunk(chunkSize);
    unsigned long long total = 0;
    while (in->read(reinterpret_cast<char*>(chunk.data()), static_cast<std::streamsize>(chunk.size())) ||
           in->gcount() > 0) {
        const auto size = static_cast<std::size_t>(in->gcount());
        log.traceHex(ovo::format("chunk at %llu starts with", total), chunk.data(), size < 8 ? static_cast<unsigned int>(size) : 8u);
        printDump(chunk.data(), size, total);
        total += size;
    }
    if (in->bad())
        throw Failure(ovo::format("read error after %llu bytes", total));
    log.info(ovo::format("%llu bytes", total));
    return 0;
}

} // namespace ovo_tool
