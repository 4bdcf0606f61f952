#include "share/ReadoutLabel.h"

namespace veltrac {

namespace {

constexpr int kLines = 4;
constexpr int kLineMargin = 2;

}  // namespace

QString readoutTable(const Readout& rows)
{
    QString html = QStringLiteral("<table  BGCOLOR=#ffffe0>");
    for (const ReadoutRow& row : rows)
        html += QStringLiteral("<tr><td><b>%1</b></td><td>=</td><td>%2</td></tr>\n")
                    .arg(QString::fromStdString(row.name).toHtmlEscaped(),
                         QString::fromStdString(row.value).toHtmlEscaped());
    return html + QStringLiteral("</table>");
}

ReadoutLabel::ReadoutLabel(QWidget* parent) : QLabel(parent)
{
    setAlignment(Qt::AlignTop | Qt::AlignLeft);
    setWordWrap(true);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
    // What stands above keeps its place when the mouse comes and goes.
    setMinimumHeight(kLines * (fontMetrics().height() + kLineMargin));
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

}  // namespace veltrac
