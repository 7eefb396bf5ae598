#include <ovo/io/serial_io.h>
#include <ovo/strings.h>

#include "platform/serial_calls.h"

#include <stdexcept>

namespace sys = ovo::platform::serial;

namespace ovo {
namespace io {

namespace {

// What flow control does to the four flags it owns; every other flag stays as delivered.
struct FlowFlags {
    unsigned int outxCtsFlow, outX, inX, rtsControl;
};
const FlowFlags flowFlags[] = {
    {0, 0, 0, RTS_CONTROL_DISABLE}, // flowOff
    {0, 1, 1, RTS_CONTROL_DISABLE}, // flowSoftware
    {1, 0, 0, RTS_CONTROL_TOGGLE},  // flowHardware: toggle, not handshake
};

void applyFlowControl(FlowControl flow, DCB& dcb)
{
    if (flow < flowOff || flow > flowHardware)
        return;
    const FlowFlags& flags = flowFlags[flow - flowOff];
    dcb.fOutxCtsFlow = flags.outxCtsFlow;
    dcb.fOutX = flags.outX;
    dcb.fInX = flags.inX;
    dcb.fRtsControl = flags.rtsControl;
}

} // namespace

class SerialIOImpl {
public:
    SerialIOImpl(const SerialConfig& config, ovo::logger::ILogger& logger)
        : config(config), logger(&logger), handle(INVALID_HANDLE_VALUE)
    {
    }

    ~SerialIOImpl()
    {
        if (handle != INVALID_HANDLE_VALUE)
            sys::CloseHandle(handle);
    }

    void openDevice()
    {
        const std::string path = ovo::format("\\\\.\\%s", config.deviceName().c_str());
        handle = sys::CreateFileA(path.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                  FILE_ATTRIBUTE_NORMAL, nullptr);
        if (handle != INVALID_HANDLE_VALUE) {
            logger->info(ovo::format("openDevice( '%s' ) OK", config.deviceName().c_str()));
            return;
        }
        const unsigned long error = sys::GetLastError();
        logger->info(ovo::format("openDevice( '%s' ) failed: %ld", config.deviceName().c_str(),
                                 static_cast<long>(error)));
        throw std::runtime_error(ovo::format("can't open '%s'. error = %lu", config.deviceName().c_str(), error));
    }

    void configure() const
    {
        DCB dcb = {};
        dcb.DCBlength = sizeof(DCB);
        if (!sys::GetCommState(handle, &dcb))
            throw std::runtime_error(ovo::format("::GetCommState( '%s' ) failed. error = %ld",
                                                 config.deviceName().c_str(),
                                                 static_cast<long>(sys::GetLastError())));
        if (config.baudRate() != 0)
            dcb.BaudRate = config.baudRate();
        if (config.dataSize() >= dataSize5 && config.dataSize() <= dataSize8)
            dcb.ByteSize = static_cast<BYTE>(5 + config.dataSize() - dataSize5);
        static const BYTE parities[] = {EVENPARITY, ODDPARITY, NOPARITY};
        if (config.parity() >= parityEven && config.parity() <= parityNone)
            dcb.Parity = parities[config.parity() - parityEven];
        static const BYTE stopBits[] = {ONESTOPBIT, ONE5STOPBITS, TWOSTOPBITS};
        if (config.stopBits() >= stopBits1 && config.stopBits() <= stopBits2)
            dcb.StopBits = stopBits[config.stopBits() - stopBits1];
        applyFlowControl(config.flowControl(), dcb);

        const SerialTimeouts& t = config.commTimeouts();
        COMMTIMEOUTS timeouts = {};
        timeouts.ReadIntervalTimeout = t.readInterval;
        timeouts.ReadTotalTimeoutConstant = t.readConstant;
        timeouts.ReadTotalTimeoutMultiplier = t.readMultiplier;
        timeouts.WriteTotalTimeoutConstant = t.writeConstant;
        timeouts.WriteTotalTimeoutMultiplier = t.writeMultiplier;

        // A setting the device refuses gives no error.
        sys::SetCommState(handle, &dcb);
        sys::SetCommTimeouts(handle, &timeouts);
        sys::SetupComm(handle, config.buffersSize().inputSize, config.buffersSize().outputSize);
    }

    // Attempt after attempt until the request is met, an attempt fails or brings nothing;
    // each attempt traces its own bytes.
    template <typename Buffer, typename Transfer>
    unsigned int loop(Buffer buffer, unsigned int size, Transfer transfer, const char* wholeTitle,
                      const char* partTitle) const
    {
        unsigned int total = 0;
        for (;;) {
            DWORD count = 0;
            if (!transfer(handle, buffer, size, &count) || count == 0)
                return total;
            total += count;
            if (count == size) {
                logger->traceDump(ovo::format(wholeTitle, static_cast<long>(count)), buffer, count);
                return total;
            }
            logger->traceDump(ovo::format(partTitle, static_cast<long>(count), static_cast<long>(size)), buffer,
                              count);
            buffer += count;
            size -= count;
        }
    }

    SerialConfig config;
    ovo::logger::ILogger* logger; // not owned, never null
    HANDLE handle;
};

SerialIO::SerialIO(const SerialConfig& config) : SerialIO(config, ovo::logger::null()) {}

SerialIO::SerialIO(const SerialConfig& config, ovo::logger::ILogger& logger)
    : impl_(new SerialIOImpl(config, logger))
{
    impl_->openDevice();
    impl_->configure(); // on failure impl_ goes, and closes the device with it
}

SerialIO::~SerialIO() = default;

SerialConfig& SerialIO::config() { return impl_->config; }

void SerialIO::configure() const { impl_->configure(); }

void SerialIO::purge() const { sys::PurgeComm(impl_->handle, PURGE_TXCLEAR | PURGE_RXCLEAR); }

unsigned int SerialIO::available() const
{
    COMSTAT status = {};
    sys::ClearCommError(impl_->handle, nullptr, &status);
    return status.cbInQue; // 0 when the query itself fails
}

unsigned int SerialIO::recv(unsigned char* buffer, unsigned int size) const
{
    return impl_->loop(buffer, size,
                       [](HANDLE handle, unsigned char* data, unsigned int wanted, DWORD* count) {
                           return sys::ReadFile(handle, data, wanted, count, nullptr);
                       },
                       "recv <- [ %ld ]: ", "recv <- [ %ld of %ld ]: ");
}

unsigned int SerialIO::send(const unsigned char* buffer, unsigned int size) const
{
    return impl_->loop(buffer, size,
                       [](HANDLE handle, const unsigned char* data, unsigned int wanted, DWORD* count) {
                           return sys::WriteFile(handle, data, wanted, count, nullptr);
                       },
                       "send -> [ %ld ]: ", "send -> [ %ld of %ld ]: ");
}

} // namespace io
} // namespace ovo
