#include "TextLayout.h"

namespace orvel::tools {

namespace {

constexpr size_t columns = 80;
constexpr size_t labelColumns = 26;

bool StartsCharacter(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) != 0x80; // the other bytes of UTF-8 continue one
}

/// Where a line of at most `width` characters ends: at the last space within, else after the width.
size_t LineEnd(const std::string& text, size_t begin, size_t width)
{
    size_t characters = 0;
    size_t lastSpace = std::string::npos;
    for (size_t i = begin; i < text.size(); ++i) {
        if (StartsCharacter(text[i]) && ++characters > width) {
            return lastSpace != std::string::npos ? lastSpace : i;
        }
        if (text[i] == ' ' && i > begin) {
            lastSpace = i;
        }
    }
    return text.size();
}

/// Writes the text from the current column on; further lines begin at `indent`.
void WriteFrom(std::ostream& out, const std::string& text, size_t indent)
{
    size_t begin = 0;
    do {
        const size_t end = LineEnd(text, begin, columns - indent);
        out << text.substr(begin, end - begin) << '\n';
        begin = end < text.size() && text[end] == ' ' ? end + 1 : end;
        if (begin < text.size()) {
            out << std::string(indent, ' ');
        }
    } while (begin < text.size());
}

} // namespace

void WriteEntry(std::ostream& out, const std::string& label, const std::string& value)
{
    const size_t used = 4 + label.size();
    out << "    " << label
        << (used < labelColumns ? std::string(labelColumns - used, ' ') : "\n" + std::string(labelColumns, ' '));
    WriteFrom(out, value, labelColumns);
}

void WriteWrapped(std::ostream& out, const std::string& text, size_t indent)
{
    out << std::string(indent, ' ');
    WriteFrom(out, text, indent);
}

std::string Bold(const std::string& text, bool isColoured)
{
    return isColoured ? "\x1B[1m" + text + "\x1B[0m" : text;
}

} // namespace orvel::tools
