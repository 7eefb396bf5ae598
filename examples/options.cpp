// Reading options from a command line: value objects of the program's own, bound to
// short and long names; the processor hands each word's value to its object.
//   options -p=ttyUSB0 --timeout=500 -v
#include <ovo/number_parser.h>
#include <ovo/options/options_processor.h>

#include <cstdio>
#include <exception>
#include <string>

namespace {

//! [values]
using ovo::ProgramOptions::IOptionValue;

struct Text : IOptionValue {
    std::string value;
    bool setValue(const std::string& text) override
    {
        value = text;
        return !text.empty(); // "-p" without a value does not count
    }
};

struct Milliseconds : IOptionValue {
    long value = 1000;
    bool setValue(const std::string& text) override
    {
        value = ovo::NumberParser::parseLong(text); // throws on a word that is no number
        return true;
    }
};

struct Flag : IOptionValue {
    bool set = false;
    bool setValue(const std::string&) override { return set = true; }
};
//! [values]

const char usage[] = "usage: options [-p=PORT] [-t=MILLISECONDS] [-v]\n";

} // namespace

int main(int argc, char* argv[])
{
    //! [bind]
    Text port;
    Milliseconds timeout;
    Flag verbose;
    ovo::ProgramOptions::OptionsProcessor options; // "-" before a name, "=" before a value
    options.add("p", "port", "the serial device", &port);
    options.add("t", "timeout", "milliseconds to wait for an answer", &timeout);
    options.add("v", "verbose", "trace the traffic", &verbose);
    //! [bind]
    try {
        // Words that name no option are skipped; the count tells how many were taken.
        const int taken = options.process(argc, argv);
        if (taken != argc - 1) {
            std::fprintf(stderr, "%s", usage);
            return 2;
        }
        std::printf("%d of %d words taken: port '%s', timeout %ld ms, verbose %s\n", taken, argc - 1,
                    port.value.c_str(), timeout.value, verbose.set ? "yes" : "no");
        return 0;
    } catch (const std::exception& e) { // a value object refused its word by throwing
        std::fprintf(stderr, "bad option: %s\n%s", e.what(), usage);
        return 2;
    }
}
