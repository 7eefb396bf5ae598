#include <ovo/strings.h>

#include <cctype>

namespace ovo {

namespace {

int lower(char c) { return std::tolower(static_cast<unsigned char>(c)); }
int upper(char c) { return std::toupper(static_cast<unsigned char>(c)); }

} // namespace

bool compare(const std::string& a, const std::string& b) { return a == b; }

bool icompare(const std::string& a, const std::string& b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if (lower(a[i]) != lower(b[i]))
            return false;
    return true;
}

std::string& toLowerInPlace(std::string& text)
{
    for (char& c : text)
        c = static_cast<char>(lower(c));
    return text;
}

std::string& toUpperInPlace(std::string& text)
{
    for (char& c : text)
        c = static_cast<char>(upper(c));
    return text;
}

std::string toLower(const std::string& text)
{
    std::string copy(text);
    return toLowerInPlace(copy);
}

std::string toUpper(const std::string& text)
{
    std::string copy(text);
    return toUpperInPlace(copy);
}

} // namespace ovo
