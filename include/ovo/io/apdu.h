/// @file
/// One command or response unit of a smart card.
#ifndef OVO_IO_APDU_H
#define OVO_IO_APDU_H

#include <ovo/export.h>

#include <vector>

namespace ovo {
namespace io {

/// One command or response unit in the short form of ISO/IEC 7816-4: just its bytes.
///
/// Command and response are one type; every query works on whatever bytes it holds.
/// A unit is a value that owns its bytes and copies deeply; nothing in it reports a
/// failure. One object is used by one thread at a time.
///
/// A command of case 3 and the card's response (from card_exchange.cpp):
/// @snippet card_exchange.cpp exchange
class OVO_API apdu {
public:
    /// Case 1: the four header bytes.
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2);
    /// Case 2: the header and Le.
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char le);
    /// Case 3: the header, Lc and Lc bytes of data (data is not read when Lc is 0).
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
         const void* data);
    /// Case 4: the header, Lc, Lc bytes of data, Le.
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
         const void* data, unsigned char le);
    /// A copy with storage exactly as long as the source's bytes.
    apdu(const apdu& other);
    /// Takes the bytes; the source is left empty, without storage.
    apdu(apdu&& other) noexcept;
    /// Replaces the bytes with a copy of other's, in storage exactly that long.
    apdu& operator=(const apdu& other);
    /// Takes other's bytes; other is left empty, without storage.
    apdu& operator=(apdu&& other) noexcept;
    /// Frees the bytes.
    ~apdu();

    /// A unit of exactly the size bytes at data; nothing is parsed (data is not read for size 0).
    static apdu fromBuffer(const void* data, unsigned int size);

    /// The bytes; null for a unit without storage.
    const unsigned char* raw() const;
    /// The number of bytes.
    unsigned int size() const;
    /// The last byte but one (the first status byte of a response), 0 for fewer than 2 bytes.
    unsigned char sw1() const;
    /// The last byte (the second status byte of a response), 0 for fewer than 2 bytes.
    unsigned char sw2() const;
    /// Whether the unit is a successful response: sw1() == 0x90, whatever sw2() is. 61 xx
    /// (more data to get) and the warnings 62 xx and 63 xx are no success; `ovo apdu`
    /// counts alike.
    bool isSuccess() const;

private:
    apdu();
    std::vector<unsigned char> bytes_;
};

} // namespace io
} // namespace ovo

#endif
