#include "share/SourceChooser.h"

#include <QCollator>
#include <QDir>
#include <QDirIterator>
#include <QEvent>
#include <QFileInfo>
#include <QFormLayout>
#include <QSignalBlocker>

#include <algorithm>
#include <memory>

#include "core/TSFILE.h"
#include "core/TsNames.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

// More than anybody scrolls through, and far less than a header that lies may claim.
constexpr std::uint32_t kMostColumns = 10000;

}  // namespace

QStringList tsFileNames()
{
    QStringList names;
    for (QDirIterator entries(QStringLiteral(".")); entries.hasNext();) {
        entries.next();
        if (entries.fileInfo().isFile() && entries.fileInfo().suffix().toLower() == QLatin1String("ts"))
            names << entries.fileName();
    }
    QCollator order;
    order.setNumericMode(true);
    order.setCaseSensitivity(Qt::CaseInsensitive);
    std::sort(names.begin(), names.end(), order);
    return names;
}

FileCombo::FileCombo(QWidget* parent) : QComboBox(parent)
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(16);
    setMaxVisibleItems(24);
    refresh();
}

QString FileCombo::file() const
{
    if (currentText().isEmpty() || m_directory == QDir::currentPath())
        return currentText();
    return QDir(m_directory).absoluteFilePath(currentText());
}

bool FileCombo::setFile(const QString& name)
{
    const bool here = QFileInfo(name).absoluteDir() == QDir::current();
    const QString shown = here ? QFileInfo(name).fileName() : QFileInfo(name).absoluteFilePath();
    if (findText(shown) < 0) {
        if (!QFileInfo::exists(name))
            return false;
        addItem(shown);
    }
    setCurrentIndex(findText(shown));
    return true;
}

void FileCombo::refresh()
{
    const bool isFirst = m_directory.isEmpty();
    const QString before = file();
    const QSignalBlocker quiet(this);
    m_directory = QDir::currentPath();
    clear();
    addItems(tsFileNames());
    // A file that is gone is shown as none, not as another one of the directory.
    if (!isFirst && (before.isEmpty() || !setFile(before)))
        setCurrentIndex(-1);
}

ColumnCombo::ColumnCombo(QWidget* parent) : QComboBox(parent)
{
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(12);
    setMaxVisibleItems(24);
}

void ColumnCombo::setColumn(unsigned column)
{
    if (const int index = findData(column); index >= 0)
        setCurrentIndex(index);
}

bool ColumnCombo::showFile(const QString& file, bool withTime)
{
    const bool isBack = count() == 0 && m_lost.file == file;
    const Choice before = isBack ? m_lost : Choice{file, column(), currentText()};
    const QSignalBlocker quiet(this);
    clear();
    if (file.isEmpty())
        return false;
    try {
        const std::unique_ptr<TSFILE> ts = openTsFile(file.toLocal8Bit().toStdString(), true);
        const std::uint32_t count = std::min(ts->columns(), kMostColumns);
        for (std::uint32_t c = 1; c <= count; ++c) {
            if (!withTime && (c == ts->timeColumn() || c == ts->time32Column()))
                continue;
            const QString name = headerText(ts->columnName(c));
            addItem(name.isEmpty() ? QStringLiteral("Column %1").arg(c) : name, c);
            const QString description = headerText(ts->columnDescription(c));
            setItemData(this->count() - 1, description.isEmpty() ? name : description, Qt::ToolTipRole);
        }
    } catch (...) {
        // A file cut short shows the columns that can be read.
    }
    m_lost = count() == 0 ? before : Choice();
    // Columns may share a name: the same number under the same name comes first.
    const int sameNumber = findData(before.column);
    const int sameName =
        sameNumber >= 0 && itemText(sameNumber) == before.name ? sameNumber : findText(before.name);
    setCurrentIndex(sameName >= 0 ? sameName : std::max(0, sameNumber));
    return count() > 0;
}

SourceChooser::SourceChooser(bool withTime, QWidget* parent)
    : QWidget(parent), m_withTime(withTime), m_files(new FileCombo(this)), m_columns(new ColumnCombo(this))
{
    auto* const form = new QFormLayout(this);
    form->setContentsMargins(0, 0, 0, 0);
    form->addRow(QStringLiteral("Source f&ile:"), m_files);
    form->addRow(QStringLiteral("Source &column:"), m_columns);
    setWhatsThis(QStringLiteral("The ts-file of this directory, and its column, that is the source."));
    m_files->setAccessibleName(QStringLiteral("Source file"));
    m_columns->setAccessibleName(QStringLiteral("Source column"));
    connect(m_files, qOverload<int>(&QComboBox::currentIndexChanged), this, [this] { showColumns(); });
    connect(m_columns, qOverload<int>(&QComboBox::currentIndexChanged), this,
            &SourceChooser::x_source_changed);
    showColumns();
}

void SourceChooser::choose(const QString& file, unsigned column)
{
    if (!file.isEmpty()) {
        // Its first column, whatever column of another file stood here.
        const QSignalBlocker quiet(m_columns);
        m_columns->clear();
        m_files->setFile(file);
    }
    showColumns();
    if (column != 0)
        m_columns->setColumn(column);
}

void SourceChooser::refresh()
{
    m_files->refresh();
    showColumns();
}

void SourceChooser::changeEvent(QEvent* event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && !JobProgress::isRunning())
        refresh();
}

void SourceChooser::showColumns()
{
    m_columns->showFile(m_files->file(), m_withTime);
    emit x_source_changed();
}

}  // namespace veltrac
