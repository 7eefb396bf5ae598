// One command or response unit in the short form of ISO/IEC 7816-4: just its bytes.
// Command and response are one type; every query works on whatever bytes it holds.
#ifndef OVO_IO_APDU_H
#define OVO_IO_APDU_H

#include <ovo/export.h>

#include <vector>

namespace ovo {
namespace io {

class OVO_API apdu {
public:
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2);             // case 1
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char le); // case 2
    // Case 3: Lc and Lc bytes of data (data is not read when Lc is 0).
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
         const void* data);
    // Case 4: Lc, Lc bytes of data, Le.
    apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
         const void* data, unsigned char le);
    apdu(const apdu& other);     // storage exactly as long as the source's bytes
    apdu(apdu&& other) noexcept; // the source is left empty, without storage
    apdu& operator=(const apdu& other);
    apdu& operator=(apdu&& other) noexcept;
    ~apdu();

    // Exactly the size bytes at data; nothing is parsed.
    static apdu fromBuffer(const void* data, unsigned int size);

    const unsigned char* raw() const; // null for a unit without storage
    unsigned int size() const;
    unsigned char sw1() const; // the last byte but one, 0 for fewer than 2 bytes
    unsigned char sw2() const; // the last byte, 0 for fewer than 2 bytes
    bool isSuccess() const;    // sw1() == 0x90, whatever sw2() is

private:
    apdu();
    std::vector<unsigned char> bytes_;
};

} // namespace io
} // namespace ovo

#endif
