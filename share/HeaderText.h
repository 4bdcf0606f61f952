// A ts-file's header texts between bytes and the screen.
//
// They are written as UTF-8 cut at whole characters, and read as UTF-8 where they are valid, else as
// Windows-1252, so that files of older programs show their umlauts.
#pragma once

#include <QByteArray>
#include <QString>

namespace veltrac {

// Bytes of a text of the user's, at most `width` of them.
QByteArray headerBytes(const QString& text, int width);

// A header text as it is shown, without trailing blanks and control characters. Null gives an empty one.
QString headerText(const char* bytes);

// The description of a column with its unit, "Amplitude of Force [N]". The unit, which may be empty, outlives
// the cut at the end of the field.
QByteArray descriptionBytes(const QString& text, const QString& unit);

// The widths that a user's texts are cut to.
inline constexpr int kColumnNameBytes = 11;
inline constexpr int kColumnDescriptionBytes = 45;
inline constexpr int kFileDescriptionBytes = 59;
inline constexpr int kTimeUnitBytes = 39;

}  // namespace veltrac
