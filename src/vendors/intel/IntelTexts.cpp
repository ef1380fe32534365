#include "vendors/intel/IntelTexts.h"

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "formulas/NumberText.h"

namespace orvel::shared::enumeration {

namespace {

bool IsDigit(char character)
{
    return character >= '0' && character <= '9';
}

bool IsLetter(char character)
{
    return (character >= 'a' && character <= 'z') || (character >= 'A' && character <= 'Z');
}

bool IsLetterOrDigitOr(std::string_view others, char character)
{
    return IsLetter(character) || IsDigit(character) || others.find(character) != std::string_view::npos;
}

void RemoveEvery(std::string& text, std::string_view word)
{
    for (auto position = text.find(word); position != std::string::npos; position = text.find(word, position)) {
        text.erase(position, word.size());
    }
}

bool IsChipName(std::string_view text)
{
    return text.size() >= 2 && IsDigit(text.back()) &&
           std::all_of(text.begin(), text.end(), [](char c) { return IsLetterOrDigitOr("-_. ", c); });
}

} // namespace

std::string IntelChipName(const std::string& cardName)
{
    std::string chip = cardName;
    // Intended: "(r)" is a regular-expression group, so it matches a bare r.
    for (const std::string_view word : {"Intel", "intel", "INTEL", "r", "R"}) {
        RemoveEvery(chip, word);
    }
    return IsChipName(chip) ? chip : cardName;
}

std::string IntelGpuType(const std::string& adapterDacType)
{
    const bool isWord = adapterDacType.size() >= 2 && IsLetter(adapterDacType.front()) &&
                        std::all_of(adapterDacType.begin(), adapterDacType.end(),
                                    [](char character) { return IsLetterOrDigitOr(" ", character); });
    return isWord ? adapterDacType : std::string();
}

std::string IntelMemorySize(const std::string& bytes)
{
    const int64_t value = ToLongLong(bytes);
    if (value < 1) {
        return {};
    }
    return std::to_string(static_cast<int32_t>(value / 0x100000));
}

} // namespace orvel::shared::enumeration
