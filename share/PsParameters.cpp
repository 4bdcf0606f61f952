#include "share/PsParameters.h"

#include <cstring>

double PsParameters::gridThickness(GridStyle style) const
{
    switch (style) {
        case GridStyle::Gray:
            return grayGridThickness;
        case GridStyle::Dotted:
            return dottedGridThickness;
        case GridStyle::Black:
            return blackGridThickness;
        case GridStyle::None:
            break;
    }
    return 0.0;
}

void PsParameters::setText(char (&field)[128], const char* text)
{
    std::size_t length = std::strlen(text);
    if (length >= sizeof field) {
        length = sizeof field - 1;
        // Back to the first byte of the character that does not fit.
        while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80U)
            --length;
    }
    std::memcpy(field, text, length);
    std::memset(field + length, 0, sizeof field - length);
}

const Paper& paperOf(const PsParameters& parameters)
{
    const bool known = parameters.paper >= 0 && parameters.paper < static_cast<int>(kPapers.size());
    return kPapers[known ? static_cast<std::size_t>(parameters.paper) : 0U];
}
