#include "platform/posix/comm.h"
#include "platform/posix/file_object.h"
#include "platform/posix/serial_speed.h"
#include "platform/posix/system_calls.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace ovo {
namespace posix {

namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

class SerialPort : public FileObject {
public:
    static const unsigned kinds = fileKind | serialPortKind;

    explicit SerialPort(int descriptor) : FileObject(descriptor, kinds), kept(), timeouts()
    {
        kept.DCBlength = sizeof(DCB);
        kept.fBinary = 1;
    }

    BOOL read(void* buffer, DWORD size, DWORD& done) override;
    BOOL write(const void* buffer, DWORD size, DWORD& done) override;

    DCB kept;                 // the flags that termios has no place for, as last set
    COMMTIMEOUTS timeouts;
    DWORD queueSizes[2] = {}; // as SetupComm asked; Linux keeps its own

private:
    enum class Wait { ready, timedOut, gone };
    enum class Step { again, done, failed };
    // Waits for the descriptor to become readable or writable; a negative wait is no limit.
    Wait waitFor(short events, long long milliseconds) const;
    // Waits for the next chance to go on with a transfer of which `done` bytes went: until
    // the deadline, and no longer than the interval once a byte has come (none for a
    // negative interval). A vanished device ends the transfer, and fails it when nothing
    // went yet.
    Step awaitMore(short events, Clock::time_point deadline, long long interval, DWORD done) const;
};

const Clock::time_point never = Clock::time_point::max();

// The deadline of a total time-out of multiplier x bytes + constant milliseconds. The sum
// fits 64 bits ((2^32 - 1) x 2^32 at most); a deadline past the clock's range is `never`
// rather than a wrapped moment in the past.
Clock::time_point deadlineOf(DWORD multiplier, DWORD size, DWORD constant)
{
    const std::uint64_t total = static_cast<std::uint64_t>(multiplier) * size + constant;
    const auto now = Clock::now();
    const auto left = std::chrono::duration_cast<Milliseconds>(never - now).count();
    return total < static_cast<std::uint64_t>(left) ? now + Milliseconds(total) : never;
}

SerialPort::Step SerialPort::awaitMore(short events, Clock::time_point deadline, long long interval, DWORD done) const
{
    long long wait = -1;
    if (deadline != never) {
        wait = std::chrono::duration_cast<Milliseconds>(deadline - Clock::now()).count();
        if (wait <= 0)
            return Step::done;
    }
    if (interval >= 0 && done > 0)
        wait = wait < 0 ? interval : std::min(wait, interval);
    switch (waitFor(events, wait)) {
    case Wait::ready:
        return Step::again;
    case Wait::timedOut:
        return Step::done;
    case Wait::gone:
        break;
    }
    if (done > 0)
        return Step::done;
    SetLastError(ERROR_DEVICE_NOT_CONNECTED);
    return Step::failed;
}

SerialPort::Wait SerialPort::waitFor(short events, long long milliseconds) const
{
    pollfd entry{descriptor, events, 0};
    const auto start = Clock::now();
    for (;;) {
        long long left = milliseconds;
        if (milliseconds >= 0) {
            left -= std::chrono::duration_cast<Milliseconds>(Clock::now() - start).count();
            if (left < 0)
                left = 0;
        }
        const int slice = static_cast<int>(std::min<long long>(left, 1 << 30)); // poll takes an int
        const int ready = ::poll(&entry, 1, slice);
        if ((ready < 0 && errno == EINTR) || (ready == 0 && left > slice))
            continue;
        if (ready == 0)
            return Wait::timedOut;
        if (ready < 0 || (entry.revents & events) == 0)
            return Wait::gone; // POLLHUP, POLLERR, POLLNVAL: the other end or the adapter is gone
        return Wait::ready;
    }
}

// The rules of COMMTIMEOUTS for reading: total = constant + multiplier x bytes; the
// interval clock runs between bytes once the first has come; MAXDWORD interval with zero
// totals returns at once with what is there; MAXDWORD interval and multiplier with a
// constant returns at the first byte or at the constant; all zero waits for every byte.
BOOL SerialPort::read(void* buffer, DWORD size, DWORD& done)
{
    auto* const out = static_cast<unsigned char*>(buffer);
    const COMMTIMEOUTS& t = timeouts;
    const bool noInterval = t.ReadIntervalTimeout == MAXDWORD;
    const bool atOnce = noInterval && t.ReadTotalTimeoutMultiplier == 0 && t.ReadTotalTimeoutConstant == 0;
    const bool firstByteEnds = noInterval && t.ReadTotalTimeoutMultiplier == MAXDWORD &&
                               t.ReadTotalTimeoutConstant != 0 && t.ReadTotalTimeoutConstant != MAXDWORD;
    const bool noTotal = t.ReadTotalTimeoutMultiplier == 0 && t.ReadTotalTimeoutConstant == 0;
    const auto deadline = firstByteEnds ? deadlineOf(0, 0, t.ReadTotalTimeoutConstant)
                          : noTotal     ? never
                                        : deadlineOf(t.ReadTotalTimeoutMultiplier, size, t.ReadTotalTimeoutConstant);
    const long long interval = noInterval ? -1 : t.ReadIntervalTimeout == 0 ? -1 : t.ReadIntervalTimeout;

    done = 0;
    while (done < size) {
        const ssize_t count = sys::read(descriptor, out + done, size - done);
        if (count > 0) {
            done += static_cast<DWORD>(count);
            if (firstByteEnds)
                break;
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count == 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) {
            if (done > 0)
                break;
            setLastErrorFromErrno(count == 0 ? EIO : errno);
            return FALSE;
        }
        if (atOnce)
            break;
        const Step step = awaitMore(POLLIN, deadline, interval, done);
        if (step == Step::done)
            break;
        if (step == Step::failed)
            return FALSE;
    }
    return TRUE;
}

// Writing ends when every byte went or the total write time-out (constant + multiplier
// x bytes; none when both are zero) has run out.
BOOL SerialPort::write(const void* buffer, DWORD size, DWORD& done)
{
    const auto* const data = static_cast<const unsigned char*>(buffer);
    const DWORD multiplier = timeouts.WriteTotalTimeoutMultiplier, constant = timeouts.WriteTotalTimeoutConstant;
    const auto deadline = multiplier == 0 && constant == 0 ? never : deadlineOf(multiplier, size, constant);
    done = 0;
    while (done < size) {
        const ssize_t count = sys::write(descriptor, data + done, size - done);
        if (count > 0) {
            done += static_cast<DWORD>(count);
            continue;
        }
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
            if (done > 0)
                break;
            setLastErrorFromErrno(errno);
            return FALSE;
        }
        const Step step = awaitMore(POLLOUT, deadline, -1, done);
        if (step == Step::done)
            break;
        if (step == Step::failed)
            return FALSE;
    }
    return TRUE;
}

SerialPort* portOf(HANDLE handle)
{
    if (objectOf<FileObject>(handle) == nullptr)
        return nullptr;
    auto* const port = objectOf<SerialPort>(handle);
    if (port == nullptr)
        SetLastError(ERROR_INVALID_FUNCTION); // a handle, but no communication device
    return port;
}

tcflag_t sizeFlag(BYTE byteSize)
{
    switch (byteSize) {
    case 5:
        return CS5;
    case 6:
        return CS6;
    case 7:
        return CS7;
    default:
        return CS8;
    }
}

BYTE byteSizeOf(tcflag_t flags)
{
    switch (flags & CSIZE) {
    case CS5:
        return 5;
    case CS6:
        return 6;
    case CS7:
        return 7;
    default:
        return 8;
    }
}

} // namespace

FileObject* openSerialPort(int descriptor)
{
    termios settings;
    if (::tcgetattr(descriptor, &settings) != 0) {
        setLastErrorFromErrno(errno);
        ::close(descriptor);
        return nullptr;
    }
    // Raw bytes both ways, as a Windows port always is (fBinary).
    ::cfmakeraw(&settings);
    settings.c_cflag |= CLOCAL | CREAD;
    // With VMIN 0 an empty non-blocking read gives 0, which would look like a hang-up;
    // with 1 it gives EAGAIN. The descriptor never blocks, so VMIN sets no wait.
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    ::tcsetattr(descriptor, TCSANOW, &settings);
    return new SerialPort(descriptor);
}

} // namespace posix
} // namespace ovo

using ovo::posix::portOf;
using ovo::posix::SerialPort;
using ovo::posix::setLastErrorFromErrno;

BOOL GetCommState(HANDLE file, LPDCB dcb)
{
    SerialPort* const port = portOf(file);
    termios settings;
    if (port == nullptr || dcb == nullptr)
        return FALSE;
    if (::tcgetattr(port->descriptor, &settings) != 0) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    *dcb = port->kept;
    dcb->DCBlength = sizeof(DCB);
    dcb->BaudRate = ovo::posix::lineSpeed(port->descriptor);
    dcb->ByteSize = ovo::posix::byteSizeOf(settings.c_cflag);
    if ((settings.c_cflag & PARENB) == 0)
        dcb->Parity = NOPARITY;
    else if ((settings.c_cflag & CMSPAR) != 0)
        dcb->Parity = (settings.c_cflag & PARODD) != 0 ? MARKPARITY : SPACEPARITY;
    else
        dcb->Parity = (settings.c_cflag & PARODD) != 0 ? ODDPARITY : EVENPARITY;
    if ((settings.c_cflag & CSTOPB) == 0)
        dcb->StopBits = ONESTOPBIT;
    else if (port->kept.StopBits != ONE5STOPBITS) // termios has one flag for both
        dcb->StopBits = TWOSTOPBITS;
    dcb->fOutxCtsFlow = (settings.c_cflag & CRTSCTS) != 0;
    dcb->fOutX = (settings.c_iflag & IXON) != 0;
    dcb->fInX = (settings.c_iflag & IXOFF) != 0;
    dcb->XonChar = static_cast<char>(settings.c_cc[VSTART]);
    dcb->XoffChar = static_cast<char>(settings.c_cc[VSTOP]);
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL SetCommState(HANDLE file, LPDCB dcb)
{
    SerialPort* const port = portOf(file);
    termios settings;
    if (port == nullptr || dcb == nullptr)
        return FALSE;
    if (dcb->ByteSize < 5 || dcb->ByteSize > 8 || dcb->Parity > SPACEPARITY || dcb->StopBits > TWOSTOPBITS) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    if (::tcgetattr(port->descriptor, &settings) != 0) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    settings.c_cflag = (settings.c_cflag & ~(CSIZE | PARENB | PARODD | CMSPAR | CSTOPB | CRTSCTS)) |
                       ovo::posix::sizeFlag(dcb->ByteSize);
    if (dcb->Parity != NOPARITY)
        settings.c_cflag |= PARENB;
    if (dcb->Parity == ODDPARITY || dcb->Parity == MARKPARITY)
        settings.c_cflag |= PARODD;
    if (dcb->Parity == MARKPARITY || dcb->Parity == SPACEPARITY)
        settings.c_cflag |= CMSPAR;
    if (dcb->StopBits != ONESTOPBIT)
        settings.c_cflag |= CSTOPB;
    if (dcb->fOutxCtsFlow || dcb->fRtsControl == RTS_CONTROL_HANDSHAKE)
        settings.c_cflag |= CRTSCTS;
    settings.c_iflag = (settings.c_iflag & ~(IXON | IXOFF)) | (dcb->fOutX ? IXON : 0) | (dcb->fInX ? IXOFF : 0);
    if (dcb->XonChar != dcb->XoffChar) {
        settings.c_cc[VSTART] = static_cast<cc_t>(dcb->XonChar);
        settings.c_cc[VSTOP] = static_cast<cc_t>(dcb->XoffChar);
    }
    if (::tcsetattr(port->descriptor, TCSANOW, &settings) != 0 ||
        (dcb->BaudRate != 0 && !ovo::posix::setLineSpeed(port->descriptor, dcb->BaudRate))) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    port->kept = *dcb;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts)
{
    SerialPort* const port = portOf(file);
    if (port == nullptr || timeouts == nullptr)
        return FALSE;
    port->timeouts = *timeouts;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL SetupComm(HANDLE file, DWORD inQueue, DWORD outQueue)
{
    SerialPort* const port = portOf(file);
    if (port == nullptr)
        return FALSE;
    port->queueSizes[0] = inQueue;
    port->queueSizes[1] = outQueue;
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL ClearCommError(HANDLE file, LPDWORD errors, LPCOMSTAT status)
{
    SerialPort* const port = portOf(file);
    if (port == nullptr)
        return FALSE;
    int waiting = 0;
    int unsent = 0;
    if (::ioctl(port->descriptor, TIOCINQ, &waiting) != 0 || ::ioctl(port->descriptor, TIOCOUTQ, &unsent) != 0) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    if (errors != nullptr)
        *errors = 0;
    if (status != nullptr) {
        *status = COMSTAT();
        status->cbInQue = static_cast<DWORD>(waiting);
        status->cbOutQue = static_cast<DWORD>(unsent);
    }
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}

BOOL PurgeComm(HANDLE file, DWORD flags)
{
    SerialPort* const port = portOf(file);
    if (port == nullptr)
        return FALSE;
    const bool input = (flags & PURGE_RXCLEAR) != 0;
    const bool output = (flags & PURGE_TXCLEAR) != 0;
    if ((input || output) && ::tcflush(port->descriptor, input && output ? TCIOFLUSH : input ? TCIFLUSH : TCOFLUSH) != 0) {
        setLastErrorFromErrno(errno);
        return FALSE;
    }
    SetLastError(ERROR_SUCCESS);
    return TRUE;
}
