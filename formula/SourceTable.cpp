#include "formula/SourceTable.h"

#include <QFile>
#include <QHeaderView>

#include <algorithm>
#include <iterator>

#include "core/TSFILE.h"
#include "core/TsExceptions.h"
#include "core/TsNames.h"
#include "formula/FormulaParser.h"
#include "portal/TsApplication.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

struct ColumnHead
{
    const char* header;
    const char* tip;
};
constexpr ColumnHead kColumns[] = {
    {"Source file",
     "The target/source file name\nThe target/source file is selected from available ts files at the present "
     "directory."},
    {"Column",
     "The target/source column\nThe target/source column is selected from the selected target/source file."},
    {"Start",
     "The start time of the target/source file\nThe start time is editable and influences the interval "
     "within which the target is calculated ."},
    {"End",
     "The end time of the target/source file\nThe end time is editable and influences the interval within "
     "which the target is calculated ."},
    {"Sampletime",
     "The sample time of the target/source file\nThe sample time for a target/source is not editable."},
};

std::shared_ptr<TSFILE> openQuietly(const QString& file)
{
    for (const bool readOnly : {false, true}) {
        try {
            return openTsFile(QFile::encodeName(file).toStdString(), readOnly);
        } catch (const TS::Failure&) {
            // for reading, or not at all
        }
    }
    return nullptr;
}

}  // namespace

SourceTable::SourceTable(QWidget* parent) : QTableWidget(0, static_cast<int>(std::size(kColumns)), parent)
{
    setAccessibleName(QStringLiteral("Sources"));
    for (int c = 0; c < columnCount(); ++c) {
        auto* const header = new QTableWidgetItem(QLatin1String(kColumns[c].header));
        header->setToolTip(QLatin1String(kColumns[c].tip));
        setHorizontalHeaderItem(c, header);
    }
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    setSelectionMode(QAbstractItemView::NoSelection);
    // Tab goes from field to field and on; the table itself has nothing to do with keys.
    setTabKeyNavigation(false);
    setFocusPolicy(Qt::NoFocus);
}

EditVariable* SourceTable::source(int index) const
{
    return index < 0 || index >= static_cast<int>(m_sources.size())
               ? nullptr
               : m_sources[static_cast<std::size_t>(index)];
}

void SourceTable::addSource(const QString& file, unsigned column)
{
    const int index = static_cast<int>(m_sources.size()) + 1;
    setRowCount(index);
    setVerticalHeaderItem(index - 1, new QTableWidgetItem(QStringLiteral("x%1").arg(index)));
    auto* const row = new EditVariable(index, this, this);
    connect(row, &EditVariable::x_file_chosen, this, &SourceTable::openFile);
    connect(row, &EditVariable::x_changed, this, &SourceTable::x_changed);
    for (int c = 0; c < columnCount(); ++c)
        cellWidget(index - 1, c)->setWhatsThis(QLatin1String(kColumns[c].tip));
    m_sources.push_back(row);
    row->choose(file, column);
    emit x_changed();
}

void SourceTable::removeSource()
{
    if (m_sources.empty())
        return;
    delete m_sources.back();
    m_sources.pop_back();
    setRowCount(static_cast<int>(m_sources.size()));
    emit x_changed();
}

void SourceTable::refreshFiles()
{
    for (EditVariable* const row : m_sources)
        row->refreshFiles();
}

std::shared_ptr<TSFILE> SourceTable::heldOf(const QString& file) const
{
    const auto holds = [&file](const EditVariable* row) {
        return row->ts() && isSameFile(row->file(), file);
    };
    const auto row = std::find_if(m_sources.begin(), m_sources.end(), holds);
    return row == m_sources.end() ? nullptr : (*row)->ts();
}

std::shared_ptr<TSFILE> SourceTable::openShared(const QString& file) const
{
    if (auto held = heldOf(file))
        return held;
    TsApplication* const application = TsApplication::instance();
    if (application == nullptr || file.isEmpty())
        return nullptr;
    std::shared_ptr<TSFILE> ts(application->OpenTs(file, false));
    if (!ts)
        ts.reset(application->OpenTs(file, true));
    return ts;
}

void SourceTable::openFile(EditVariable* row)
{
    row->setTs(nullptr);
    row->setTs(openShared(row->file()));
    if (!row->ts())
        emit x_not_opened(row->fileName());
}

void SourceTable::reopenFiles()
{
    for (EditVariable* const row : m_sources)
        row->setTs(nullptr);
    for (EditVariable* const row : m_sources)
        row->setTs(openShared(row->file()));
}

void SourceTable::followFiles(bool closed)
{
    for (EditVariable* const row : m_sources)
        row->setTs(nullptr);
    for (EditVariable* const row : m_sources) {
        if (closed)
            row->refreshFiles();
        try {
            auto held = heldOf(row->file());
            row->setTs(held ? std::move(held) : openQuietly(row->file()));
        } catch (const TS::Failure&) {
            row->setTs(nullptr);  // it opens, but its times cannot be read
        }
    }
}

void SourceTable::bindTo(FormulaParser& parser, const EditVariable* target) const
{
    const auto bind = [&parser](const EditVariable& row) {
        parser.SetSource(row.ts().get(), static_cast<std::int32_t>(row.column()), row.index());
    };
    if (target != nullptr) {
        parser.setTarget(target->ts().get());
        bind(*target);
    }
    for (const EditVariable* const row : m_sources)
        bind(*row);
}

std::vector<const EditVariable*> SourceTable::usedBy(const QByteArray& formula,
                                                     const EditVariable& target) const
{
    const auto used = usedRows(formula.toStdString(), static_cast<int>(m_sources.size()), target.index());
    std::vector<const EditVariable*> rows;
    std::copy_if(
        m_sources.begin(), m_sources.end(), std::back_inserter(rows),
        [&used](const EditVariable* row) { return used[static_cast<std::size_t>(row->index() - 1)]; });
    return rows;
}

}  // namespace veltrac
