// A client of an installed ovosystem: the umbrella header, a parse, and a logger with
// a channel of its own.
#include <ovo/ovosystem.h>

#include <iostream>
#include <memory>

namespace {

struct StdoutChannel : ovo::logger::AbstractLogChannel {
    void write(const std::string&, const std::string& message) override { std::cout << message << '\n'; }
};

} // namespace

int main()
{
    ovo::logger::ILogger& logger = ovo::logger::add("client", std::make_shared<StdoutChannel>());
    logger.setLevel(1);
    const unsigned char bytes[] = {0x12, 0x34, 0xAB};
    std::cout << ovo::format("parsed %lu, ", ovo::NumberParser::parseHex("0x1234"));
    logger.traceHex("bytes", bytes, 3);
    return 0;
}
