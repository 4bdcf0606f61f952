#include "share/HeaderText.h"

#include <QTextCodec>

QByteArray headerBytes(const QString& text, int width)
{
    QByteArray bytes = text.toUtf8();
    if (bytes.size() > width) {
        int end = width;
        while (end > 0 && (static_cast<unsigned char>(bytes[end]) & 0xC0U) == 0x80U)
            --end;
        bytes.truncate(end);
    }
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
