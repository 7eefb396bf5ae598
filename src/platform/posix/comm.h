// Serial devices in the POSIX layer: the Win32 communication calls on termios.
//
// CreateFileA("\\.\NAME") opens /dev/NAME (an absolute NAME is used as it stands) as a
// non-blocking terminal in raw mode; transfers then keep the COMMTIMEOUTS rules with
// poll() and a monotonic time budget.
#ifndef OVO_SRC_PLATFORM_POSIX_COMM_H
#define OVO_SRC_PLATFORM_POSIX_COMM_H

#include "platform/posix/win32_types.h"

const BYTE NOPARITY = 0;
const BYTE ODDPARITY = 1;
const BYTE EVENPARITY = 2;
const BYTE MARKPARITY = 3;
const BYTE SPACEPARITY = 4;
const BYTE ONESTOPBIT = 0;
const BYTE ONE5STOPBITS = 1;
const BYTE TWOSTOPBITS = 2;
const DWORD RTS_CONTROL_DISABLE = 0;
const DWORD RTS_CONTROL_ENABLE = 1;
const DWORD RTS_CONTROL_HANDSHAKE = 2;
const DWORD RTS_CONTROL_TOGGLE = 3;
const DWORD PURGE_TXABORT = 0x0001;
const DWORD PURGE_RXABORT = 0x0002;
const DWORD PURGE_TXCLEAR = 0x0004;
const DWORD PURGE_RXCLEAR = 0x0008;

// The layout of Windows: 28 bytes, the flags packed into one 32-bit word.
struct DCB {
    DWORD DCBlength;
    DWORD BaudRate;
    DWORD fBinary : 1;
    DWORD fParity : 1;
    DWORD fOutxCtsFlow : 1;
    DWORD fOutxDsrFlow : 1;
    DWORD fDtrControl : 2;
    DWORD fDsrSensitivity : 1;
    DWORD fTXContinueOnXoff : 1;
    DWORD fOutX : 1;
    DWORD fInX : 1;
    DWORD fErrorChar : 1;
    DWORD fNull : 1;
    DWORD fRtsControl : 2;
    DWORD fAbortOnError : 1;
    DWORD fDummy2 : 17;
    WORD wReserved;
    WORD XonLim;
    WORD XoffLim;
    BYTE ByteSize;
    BYTE Parity;
    BYTE StopBits;
    char XonChar;
    char XoffChar;
    char ErrorChar;
    char EofChar;
    char EvtChar;
    WORD wReserved1;
};
using LPDCB = DCB*;

struct COMMTIMEOUTS {
    DWORD ReadIntervalTimeout;
    DWORD ReadTotalTimeoutMultiplier;
    DWORD ReadTotalTimeoutConstant;
    DWORD WriteTotalTimeoutMultiplier;
    DWORD WriteTotalTimeoutConstant;
};
using LPCOMMTIMEOUTS = COMMTIMEOUTS*;

struct COMSTAT {
    DWORD fCtsHold : 1;
    DWORD fDsrHold : 1;
    DWORD fRlsdHold : 1;
    DWORD fXoffHold : 1;
    DWORD fXoffSent : 1;
    DWORD fEof : 1;
    DWORD fTxim : 1;
    DWORD fReserved : 25;
    DWORD cbInQue;
    DWORD cbOutQue;
};
using LPCOMSTAT = COMSTAT*;

BOOL GetCommState(HANDLE file, LPDCB dcb);
BOOL SetCommState(HANDLE file, LPDCB dcb);
BOOL SetCommTimeouts(HANDLE file, LPCOMMTIMEOUTS timeouts);
BOOL SetupComm(HANDLE file, DWORD inQueue, DWORD outQueue);
BOOL ClearCommError(HANDLE file, LPDWORD errors, LPCOMSTAT status);
BOOL PurgeComm(HANDLE file, DWORD flags);

#endif
