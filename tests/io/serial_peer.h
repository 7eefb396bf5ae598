// The device end of a serial line for SerialIO's tests. On POSIX the test holds a fresh
// pseudo-terminal's master itself; a Windows program under Wine cannot, so there a relay
// on the Linux side (socat) holds it, links the terminal to the COM port of
// OVO_SERIAL_PORT, and passes its bytes to one TCP connection on OVO_SERIAL_RELAY_PORT.
#ifndef OVO_TESTS_IO_SERIAL_PEER_H
#define OVO_TESTS_IO_SERIAL_PEER_H

#include <ovo/io/serial_config.h>

#include <cstddef>
#include <string>

// The largest DWORD, which the time-outs give meanings of their own.
const unsigned int maxDword = 0xFFFFFFFFu;

class SerialPeer {
public:
    SerialPeer(); // a failure of the test when no line can be made
    ~SerialPeer();
    SerialPeer(const SerialPeer&) = delete;
    SerialPeer& operator=(const SerialPeer&) = delete;

    // The device name of the port end, for "device=NAME".
    const std::string& portName() const { return portName_; }
    // The port end's configuration with the time-outs.
    ovo::io::SerialConfig config(const ovo::io::SerialTimeouts& timeouts) const
    {
        ovo::io::SerialConfig c = ovo::io::SerialConfig::fromString("device=" + portName_);
        c.setCommTimeouts(timeouts);
        return c;
    }
    // POSIX: the descriptors of the master (the device end) and of the terminal (the port end).
    int master() const { return device_; }
    int terminal() const { return terminal_; }
    void send(const std::string& bytes);
    // What came from the port within a second, up to size bytes.
    std::string receive(std::size_t size);
    // The device goes away: its end closes.
    void goAway();
    // Whether the Windows calls come from Wine, whose serial ports differ from Windows' in
    // places: the cases there say how, and skip.
    static bool underWine();

private:
    std::string portName_;
    int device_ = -1;   // POSIX: the master
    int terminal_ = -1; // POSIX: the port end, held open so that it outlives the port
};

#endif
