// The text form of nvCollection: load, extractNV and toString.
#include <ovo/nv_collection.h>

#include <limits>
#include <string>

namespace ovo {

namespace {

// extractNV takes positions as unsigned int; the no-position marker travels as its maximum.
const unsigned int noPosition = std::numeric_limits<unsigned int>::max();

unsigned int narrow(std::size_t position)
{
    return position == std::string::npos ? noPosition : static_cast<unsigned int>(position);
}

std::size_t widen(unsigned int position) { return position == noPosition ? std::string::npos : position; }

} // namespace

void nvCollection::load(const std::string& text, const std::string& pairSeparator, const std::string& nvSeparator)
{
    // An empty pair separator would be found at the same place forever: the whole text
    // is then one piece, which stores at most one pair.
    if (pairSeparator.empty()) {
        extractNV(text, nvSeparator, 0, noPosition);
        return;
    }
    std::size_t start = 0;
    for (;;) {
        const std::size_t end = text.find(pairSeparator, start);
        extractNV(text, nvSeparator, narrow(start), narrow(end));
        if (end == std::string::npos)
            return;
        start = end + pairSeparator.size();
    }
}

void nvCollection::extractNV(const std::string& text, const std::string& nvSeparator, unsigned int start,
                             unsigned int end)
{
    const std::size_t first = start;
    const std::size_t last = widen(end);
    if (first >= last)
        return; // an empty piece
    // The search runs to the end of the text, not only to the end of the piece.
    const std::size_t separator = text.find(nvSeparator, first);
    if (separator == last)
        return; // no separator anywhere, or the separators coincide
    if (separator > last) {
        setRaw(text.substr(first, last - first), std::string());
        return;
    }
    const std::size_t valueStart = separator + nvSeparator.size();
    // A separator that starts inside the piece but reaches past its end leaves an empty
    // value: the value never runs into the next piece.
    const std::string value =
        last == std::string::npos ? text.substr(valueStart)
        : valueStart <= last      ? text.substr(valueStart, last - valueStart)
                                  : std::string();
    setRaw(text.substr(first, separator - first), value);
}

std::string nvCollection::toString(const std::string& pairSeparator, const std::string& nvSeparator) const
{
    std::string text;
    bool first = true;
    for (const auto& entry : entries_) {
        if (!first)
            text += pairSeparator;
        first = false;
        // Names and values end at a zero byte.
        text.append(entry.first.c_str()).append(nvSeparator).append(entry.second.c_str());
    }
    return text;
}

} // namespace ovo
