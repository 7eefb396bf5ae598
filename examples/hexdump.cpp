// ovo-hexdump: the dump of a file, or of standard input, as the library's logs show
// byte traffic, with an offset in front of every line. It logs what it does through a
// logger of its own on the console (standard error), with a formatter of its own: give
// -v to see the trace family too.
//
//   ovo-hexdump [-v] [FILE]
#include <ovo/logger/channels.h>
#include <ovo/logger/logger.h>
#include <ovo/number_formatter.h>
#include <ovo/strings.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace {

const int bytesPerLine = 16;
const std::size_t chunkSize = 4096; // a multiple of bytesPerLine, so lines never straddle chunks

// "hexdump: message", one line a message.
class TaggedFormatter : public ovo::logger::IMessageFormatter {
public:
    std::string format(const std::string& name, const std::string& message) override
    {
        return name + ": " + message + "\n";
    }
};

// Prints one chunk's dump with the offset of every line in front.
void printChunk(const std::vector<char>& chunk, std::size_t size, unsigned long long offset)
{
    const std::string dump = ovo::NumberFormatter::formatBuffer(chunk.data(), static_cast<unsigned int>(size),
                                                                bytesPerLine);
    for (const std::string& line : ovo::SplitString(dump, "\n", false)) {
        std::cout << ovo::format("%08llX  ", offset) << line << '\n';
        offset += bytesPerLine;
    }
}

int usage()
{
    std::cerr << "usage: ovo-hexdump [-v] [FILE]\n"
                 "Shows FILE (standard input without one) as hex and text, 16 bytes a line.\n";
    return 2;
}

} // namespace

int main(int argc, char** argv)
{
    std::string path;
    int level = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "-v")
            level = 1;
        else if (word == "-h" || word == "--help")
            return usage() - 2;
        else if (path.empty() && (word == "-" || word[0] != '-'))
            path = word;
        else
            return usage();
    }

    auto channel = std::make_shared<ovo::logger::ConsoleLogChannel>();
    channel->setFormatter(std::make_shared<TaggedFormatter>());
    ovo::logger::ILogger& log = ovo::logger::add("hexdump", channel);
    log.setLevel(level);

    std::ifstream file;
    std::istream* in = &std::cin;
    if (!path.empty() && path != "-") {
        file.open(path, std::ios::binary);
        if (!file) {
            std::cerr << "ovo-hexdump: cannot open '" << path << "': " << std::strerror(errno) << '\n';
            return 1;
        }
        in = &file;
    }
    log.info(ovo::format("reading %s", path.empty() || path == "-" ? "standard input" : path.c_str()));

    std::vector<char> chunk(chunkSize);
    unsigned long long total = 0;
    while (in->read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || in->gcount() > 0) {
        const auto size = static_cast<std::size_t>(in->gcount());
        log.traceHex(ovo::format("chunk at %llu starts with", total), chunk.data(), size < 8 ? static_cast<unsigned int>(size) : 8u);
        printChunk(chunk, size, total);
        total += size;
    }
    if (in->bad()) {
        std::cerr << "ovo-hexdump: read error after " << total << " bytes\n";
        return 1;
    }
    log.info(ovo::format("%llu bytes in %llu lines", total, (total + bytesPerLine - 1) / bytesPerLine));
    return 0;
}
