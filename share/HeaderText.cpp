#include "share/HeaderText.h"

#include <QTextCodec>

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
    QByteArray raw(bytes);
    while (!raw.isEmpty() && static_cast<unsigned char>(raw.back()) <= ' ')
        raw.chop(1);

    QTextCodec::ConverterState state;
    QString text = QTextCodec::codecForName("UTF-8")->toUnicode(raw.constData(), raw.size(), &state);
    if (state.invalidChars == 0 && state.remainingChars == 0)
        return text;
    return QTextCodec::codecForName("windows-1252")->toUnicode(raw);
}

QByteArray descriptionBytes(const QString& text, const QString& unit)
{
    const QByteArray bracket = unit.isEmpty()
                                   ? QByteArray()
                                   : headerBytes(QStringLiteral(" [%1]").arg(unit), kColumnDescriptionBytes);
    return headerBytes(text, kColumnDescriptionBytes - static_cast<int>(bracket.size())) + bracket;
}

}  // namespace veltrac
