// Text that comes from outside (USB strings, reader names, file names, the words of a
// script) as the tool shows it: UTF-8 as it is, what is no UTF-8 or a control character
// escaped, so that no byte of it acts on the terminal.
#ifndef OVO_TOOLS_OVO_SHOWN_TEXT_H
#define OVO_TOOLS_OVO_SHOWN_TEXT_H

#include <cstddef>
#include <string>

namespace ovo_tool {

// The length of the UTF-8 sequence that starts at text[at] (1 for ASCII); 0 when the byte
// starts none: a stray continuation byte, an overlong or surrogate form, a sequence cut short.
std::size_t utf8Length(const std::string& text, std::size_t at);

// The text for a terminal: control characters (C0, DEL, C1) and bytes that are no UTF-8
// as \xHH, everything else as it is.
std::string printable(const std::string& text);

// How many columns the printable text takes (a character a column).
std::size_t columns(const std::string& printableText);

} // namespace ovo_tool

#endif
