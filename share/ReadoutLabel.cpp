#include "share/ReadoutLabel.h"

ReadoutLabel::ReadoutLabel(QWidget* parent) : QLabel(parent)
{
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    setWordWrap(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse);
    setAccessibleName(QStringLiteral("Values under the mouse"));
}

void ReadoutLabel::showTable(const Readout& rows)
{
    // The table brings its own light ground, so its ink is dark in a dark palette too.
    QPalette ink = palette();
    ink.setColor(QPalette::WindowText, Qt::black);
    setPalette(ink);
    setTextFormat(Qt::RichText);
    setText(readoutTable(rows));
}

void ReadoutLabel::showLine(const QString& text)
{
    setPalette(QPalette());
    setTextFormat(Qt::PlainText);
    setText(text);
}
