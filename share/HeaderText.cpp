#include "share/HeaderText.h"

#include "core/HeaderTexts.h"
#include "core/Utf8.h"

namespace veltrac {

QByteArray headerBytes(const QString& text, int width)
{
    QByteArray bytes = text.toUtf8();
    const std::string_view all(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    bytes.truncate(static_cast<int>(wholeCharacters(all, static_cast<std::size_t>(width))));
    return bytes;
}

QString headerText(const char* bytes)
{
    return QString::fromStdString(headerUtf8(bytes));
}

QByteArray descriptionBytes(const QString& text, const QString& unit)
{
    return QByteArray::fromStdString(fittingDescription(text.toStdString(), unit.toStdString()));
}

}  // namespace veltrac
