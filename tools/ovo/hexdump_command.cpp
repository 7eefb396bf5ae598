// ovo hexdump: a file, or standard input, as the library's logs show byte traffic.
#include "input_file.h"
#include "tool.h"

#include <ovo/strings.h>

namespace ovo_tool {
namespace {

const char hexdumpHelp[] =
    "usage: ovo hexdump [OPTIONS] [FILE]\n"
    "Shows FILE (standard input without one, or with -) as hex and text, 16 bytes a line.\n"
    "examples: ovo hexdump /bin/true | head\n"
    "          printf 'ATR' | ovo hexdump\n";

const std::size_t chunkSize = 4096; // a multiple of 16: no line straddles two chunks

// As many bytes as fit in the chunk, short only at the end (a pipe gives them piecemeal).
std::size_t fill(InputFile& in, Bytes& chunk)
{
    std::size_t size = 0;
    while (size < chunk.size()) {
        const std::size_t count = in.read(chunk.data() + size, chunk.size() - size);
        if (count == 0)
            break;
        size += count;
    }
    return size;
}

} // namespace

int hexdumpCommand(const std::vector<std::string>& args)
{
    CommandLine line;
    line.parse(args);
    if (line.printedHelp(hexdumpHelp))
        return 0;
    if (line.words().size() > 1)
        throw UsageError("ovo hexdump takes one file at most; see ovo hexdump --help");
    ovo::logger::ILogger& log = setUpLogging(line, "ovo.hexdump");
    InputFile in(line.words().empty() ? "-" : line.words()[0]);
    log.info("reading " + in.name());
    Bytes chunk(chunkSize);
    unsigned long long total = 0;
    for (std::size_t size; (size = fill(in, chunk)) > 0; total += size) {
        log.traceHex(ovo::format("chunk at %llu starts with", total), chunk.data(), size < 8 ? static_cast<unsigned int>(size) : 8u);
        printDump(chunk.data(), size, total);
    }
    log.info(ovo::format("%llu bytes", total));
    return 0;
}

} // namespace ovo_tool
