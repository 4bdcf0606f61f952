#include "converters/SCLPreview.h"

#include <QFontDatabase>
#include <QLabel>
#include <QPlainTextEdit>
#include <QVBoxLayout>

#include "converters/ImportTexts.h"
#include "converters/ValuePlot.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"

namespace veltrac {

namespace {

constexpr std::size_t kShownLines = 200;
constexpr std::size_t kShownLineBytes = 400;
constexpr std::size_t kPlottedValues = 5000;

}  // namespace

SCLPreview::SCLPreview(QWidget* parent)
    : QSplitter(Qt::Horizontal, parent),
      m_lines(new QPlainTextEdit),
      m_plot(new ValuePlot),
      m_caption(new QLabel)
{
    m_lines->setReadOnly(true);
    m_lines->setTabChangesFocus(true);
    m_lines->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    m_lines->setAccessibleName(QStringLiteral("The file's first lines"));
    auto* const plot = new QWidget;
    auto* const below = new QVBoxLayout(plot);
    below->setContentsMargins(0, 0, 0, 0);
    below->addWidget(m_plot, 1);
    below->addWidget(m_caption);
    addWidget(m_lines);
    addWidget(plot);
    setStretchFactor(0, 2);
    setStretchFactor(1, 3);
}

void SCLPreview::show(const SCLSource& source, std::uint64_t skipLines)
{
    QString lines;
    std::vector<float> values;
    try {
        LineReader reader(source.text->path(), kShownLineBytes);
        for (std::size_t i = 0; i < kShownLines && reader.next(); ++i)
            lines += headerText(std::string(reader.text()).c_str()) + QLatin1Char('\n');
        SCLReader read(source, skipLines);
        while (values.size() < kPlottedValues && read.next())
            values.push_back(read.value());
    } catch (const std::exception&) {
        lines = importFailure();
    }
    show(lines, std::move(values));
}

void SCLPreview::clear()
{
    show(QString(), {});
}

void SCLPreview::show(const QString& lines, std::vector<float> values)
{
    m_lines->setPlainText(lines);
    m_caption->setText(values.size() < kPlottedValues
                           ? QString()
                           : QStringLiteral("The first %1 values").arg(groupedNumber(kPlottedValues)));
    m_plot->show(std::move(values));
}

}  // namespace veltrac
