#include <ovo/io/apdu.h>

#include <utility>

namespace ovo {
namespace io {

apdu::apdu() = default;

apdu::apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2) : bytes_{cla, ins, p1, p2} {}

apdu::apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char le)
    : bytes_{cla, ins, p1, p2, le}
{
}

apdu::apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
           const void* data)
{
    bytes_.reserve(5u + lc);
    bytes_ = {cla, ins, p1, p2, lc};
    const auto* body = static_cast<const unsigned char*>(data);
    if (lc != 0)
        bytes_.insert(bytes_.end(), body, body + lc);
}

apdu::apdu(unsigned char cla, unsigned char ins, unsigned char p1, unsigned char p2, unsigned char lc,
           const void* data, unsigned char le)
    : apdu(cla, ins, p1, p2, lc, data)
{
    bytes_.push_back(le);
}

// A copy holds storage exactly as long as the source's bytes (none for an empty one).
apdu::apdu(const apdu& other) : bytes_(other.bytes_.begin(), other.bytes_.end()) {}

apdu::apdu(apdu&& other) noexcept : bytes_(std::move(other.bytes_))
{
    std::vector<unsigned char>().swap(other.bytes_);
}

apdu& apdu::operator=(const apdu& other)
{
    if (this != &other)
        std::vector<unsigned char>(other.bytes_.begin(), other.bytes_.end()).swap(bytes_);
    return *this;
}

apdu& apdu::operator=(apdu&& other) noexcept
{
    if (this != &other) {
        bytes_ = std::move(other.bytes_);
        std::vector<unsigned char>().swap(other.bytes_);
    }
    return *this;
}

apdu::~apdu() = default;

apdu apdu::fromBuffer(const void* data, unsigned int size)
{
    apdu unit;
    if (size != 0) {
        const auto* bytes = static_cast<const unsigned char*>(data);
        unit.bytes_.assign(bytes, bytes + size);
    }
    return unit;
}

const unsigned char* apdu::raw() const { return bytes_.empty() ? nullptr : bytes_.data(); }

unsigned int apdu::size() const { return static_cast<unsigned int>(bytes_.size()); }

unsigned char apdu::sw1() const { return bytes_.size() < 2 ? 0 : bytes_[bytes_.size() - 2]; }

unsigned char apdu::sw2() const { return bytes_.size() < 2 ? 0 : bytes_.back(); }

bool apdu::isSuccess() const { return sw1() == 0x90; }

} // namespace io
} // namespace ovo
