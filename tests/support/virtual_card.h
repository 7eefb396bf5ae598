// The virtual ISO 7816 card of the smart-card tests: a vicc process in the virtual reader
// of a PC/SC service (pcscd with the virtual reader driver, started by scripts/test.sh).
// Needs the library ovo_vicc_shim: the directory of the Crypto module that vicc needs on
// Debian 12.
#ifndef OVO_TESTS_SUPPORT_VIRTUAL_CARD_H
#define OVO_TESTS_SUPPORT_VIRTUAL_CARD_H

#include <ovo/io/enumeration.h>
#include <ovo/io/pcsc.h>

#include "support/process.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string>
#include <vector>

namespace ovo_test {

extern const char* const viccShim;

inline const char* const readerName = "Virtual PCD 00 00";
inline const std::vector<unsigned char> virtualCardAtr = {0x3B, 0x95, 0x13, 0x81, 0x01, 0x80,
                                                          0x73, 0xFF, 0x01, 0x00, 0x0B};

inline bool readerListed()
{
    const std::vector<std::string> readers = ovo::io::enumeratePCSCDevices();
    return std::find(readers.begin(), readers.end(), readerName) != readers.end();
}

// Skips the case when no PC/SC service shows the virtual reader; fails it instead where the
// test command made the service part of the run (OVO_REQUIRE_CARD_SERVICE=1).
#define OVO_SKIP_WITHOUT_VIRTUAL_READER()                                                                              \
    if (!ovo_test::readerListed()) {                                                                                   \
        ASSERT_FALSE(std::getenv("OVO_REQUIRE_CARD_SERVICE")) << "the test command started no pcscd with the reader";  \
        GTEST_SKIP() << "needs pcscd with the virtual reader (scripts/test.sh starts it)";                             \
    }

inline bool waitForCard(bool present, std::chrono::seconds limit)
{
    ovo::io::pcsc reader(readerName);
    return waitUntil([&] { return reader.isCardPresented() == present; }, limit, std::chrono::milliseconds(100));
}

// The virtual card: a vicc process connected to the virtual reader, once the card of an
// earlier case (a process of its own) has left it.
class VirtualCard {
public:
    VirtualCard()
    {
        waitForCard(false, std::chrono::seconds(10));
        pid_ = ::fork();
        if (pid_ == 0) {
            const std::string path = std::string(viccShim) + ":/usr/lib/python3/site-packages/virtualsmartcard";
            ::setenv("PYTHONPATH", path.c_str(), 1);
            ::execl("/usr/bin/python3", "python3", "/usr/bin/vicc", "-t", "iso7816", static_cast<char*>(nullptr));
            ::_exit(127);
        }
    }
    ~VirtualCard() { stop(); }

    // Stops the card process as a card that no longer answers, and lets it go on again.
    void pause() { ::kill(pid_, SIGSTOP); }
    void resume() { ::kill(pid_, SIGCONT); }

    void stop()
    {
        if (pid_ <= 0)
            return;
        ::kill(pid_, SIGTERM);
        ::waitpid(pid_, nullptr, 0);
        pid_ = -1;
    }

private:
    pid_t pid_ = -1;
};

} // namespace ovo_test

#endif
