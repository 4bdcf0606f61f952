// TsTableView: edits, undo, saving.

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPushButton>
#include <QStatusBar>

#include <algorithm>
#include <cmath>
#include <limits>

#include "core/TsNames.h"
#include "portal/FieldsDialog.h"
#include "portal/TsApplication.h"
#include "portal/TsTableView.h"
#include "share/Boxes.h"
#include "share/JobProgress.h"
#include "share/NumberField.h"

using namespace veltrac;

namespace {

constexpr int kMessageMs = 8000;

std::uint64_t cellsIn(const std::vector<SampleRun>& runs)
{
    std::uint64_t cells = 0;
    for (const SampleRun& run : runs)
        cells += run.count();
    return cells;
}

QString valuesText(std::uint64_t count)
{
    return count == 1 ? QStringLiteral("1 value") : QStringLiteral("%1 values").arg(count);
}

class FrozenView
{
public:
    explicit FrozenView(QWidget& view) : m_view(view) { m_view.setUpdatesEnabled(false); }
    ~FrozenView() { m_view.setUpdatesEnabled(true); }
    FrozenView(const FrozenView&) = delete;
    FrozenView& operator=(const FrozenView&) = delete;

private:
    QWidget& m_view;
};

QString whyNumbersAreRefused(BlockOperation operation, const std::vector<double>& numbers)
{
    if (operation == BlockOperation::ReplaceOutside && numbers[0] > numbers[1])
        return QStringLiteral("The lowest good value lies above the highest.");
    for (const double number : numbers)
        if (std::abs(number) > static_cast<double>(std::numeric_limits<float>::max()))
            return QStringLiteral("A cell holds no number beyond 3.4e38.");
    return QString();
}

}  // namespace

void TsTableView::commitOpenEditor()
{
    if (QWidget* const focus = QApplication::focusWidget();
        focus != nullptr && focus != m_view && m_view != nullptr && m_view->isAncestorOf(focus))
        m_view->setFocus();
}

void TsTableView::addEdit(const QString& name, std::vector<EditStrip> strips)
{
    m_model->editedFile()->edits().add({name.toStdString(), std::move(strips)});
    m_model->showChanges();
}

void TsTableView::sl_undo()
{
    const QString name = QString::fromStdString(m_model->editedFile()->edits().undoName());
    m_model->editedFile()->edits().undo();
    m_model->showChanges();
    statusBar()->showMessage(QStringLiteral("Undone: %1").arg(name), kMessageMs);
}

void TsTableView::sl_redo()
{
    const QString name = QString::fromStdString(m_model->editedFile()->edits().redoName());
    m_model->editedFile()->edits().redo();
    m_model->showChanges();
    statusBar()->showMessage(QStringLiteral("Done again: %1").arg(name), kMessageMs);
}

// -- Blocks --

bool TsTableView::askNumbers(const BlockOperationRow& operation, std::size_t cells,
                             std::vector<double>& numbers)
{
    if (operation.fields.empty())
        return true;
    FieldsDialog dialog(
        QString::fromUtf8(operation.name),
        QStringLiteral("%1 (%2 selected).").arg(QString::fromUtf8(operation.tip), valuesText(cells)),
        operation.fields, numbers, this);
    dialog.setCheck(
        [&](const std::vector<double>& all) { return whyNumbersAreRefused(operation.operation, all); });
    if (dialog.exec() != QDialog::Accepted)
        return false;
    numbers = dialog.numbers();
    return true;
}

void TsTableView::operate(const BlockOperationRow& operation)
{
    const std::vector<SampleRun> runs = selectedRuns();
    if (runs.empty()) {
        statusBar()->showMessage(QStringLiteral("No value that can be changed is selected."), kMessageMs);
        return;
    }
    const bool alongTime =
        operation.operation == BlockOperation::Ramp || operation.operation == BlockOperation::Interpolate;
    if (m_view->isSorted() && alongTime) {
        statusBar()->showMessage(QStringLiteral("Switch sorting off first: this works along the time."),
                                 kMessageMs);
        return;
    }
    std::vector<double>& numbers = m_lastNumbers[static_cast<std::size_t>(operation.operation)];
    if (operation.operation == BlockOperation::Ramp)
        numbers = endValues(runs.front());
    if (!askNumbers(operation, cellsIn(runs), numbers))
        return;
    const QString name = QString::fromUtf8(operation.name);
    std::vector<EditStrip> strips;
    try {
        JobProgress progress(this, name);
        if (makeStrips(operation.operation, runs, numbers, m_model->file().samples(), readerOfColumn(),
                       progress.callback(), strips) == JobOutcome::Cancelled)
            return;
    } catch (const std::exception& e) {
        tell(QMessageBox::Warning, name + QStringLiteral(": ") + QString::fromLocal8Bit(e.what()));
        return;
    } catch (...) {
        tell(QMessageBox::Warning,
             QStringLiteral("%1: the values cannot be read; the file may be cut short.").arg(name));
        return;
    }
    if (strips.empty())
        statusBar()->showMessage(QStringLiteral("%1: there is nothing to change.").arg(name), kMessageMs);
    else
        addEdit(name, std::move(strips));
}

// Where a ramp begins and ends as long as the user wants nothing else.
std::vector<double> TsTableView::endValues(const SampleRun& run) const
{
    const int column = static_cast<int>(run.column) - 1;
    std::vector<double> values;
    for (const std::uint32_t sample : {run.first, run.last})
        values.push_back(numberOf(m_model->exactCellText(static_cast<int>(sample) - 1, column))
                             .value_or(std::numeric_limits<double>::quiet_NaN()));
    return values;
}

// -- Pasting --

void TsTableView::sl_paste()
{
    const QString text = QApplication::clipboard()->text();
    if (text.isEmpty()) {
        statusBar()->showMessage(QStringLiteral("The clipboard holds no text."), kMessageMs);
        return;
    }
    const PastedTable table = parsePasted(text);
    if (table.rows.empty()) {
        tell(QMessageBox::Warning,
             QStringLiteral("\"%1\" is not a number. Nothing was pasted.").arg(table.refused.left(60)));
        return;
    }
    const bool single = table.rows.size() == 1 && table.rows.front().size() == 1;
    const std::vector<SampleRun> runs = selectedRuns();
    if (single && cellsIn(runs) > 1) {
        std::vector<EditStrip> strips;
        strips.reserve(runs.size());
        for (const SampleRun& run : runs)
            strips.push_back(setStrip(run, static_cast<double>(table.rows.front().front())));
        addEdit(QStringLiteral("Paste"), std::move(strips));
    } else {
        pasteRows(table.rows);
    }
}

// From the current cell on, over the columns that are shown; what lies beyond the table is left out and told.
void TsTableView::pasteRows(const std::vector<std::vector<float>>& rows)
{
    const std::vector<int> columns = visibleColumns(m_view->currentColumn(), m_model->columnCount() - 1);
    const int firstRow = m_view->currentRow();
    const std::size_t fitting =
        std::min(rows.size(), static_cast<std::size_t>(m_view->totalRows() - firstRow));
    std::uint64_t left = 0;
    for (std::size_t r = 0; r < rows.size(); ++r)
        left += r < fitting ? rows[r].size() - std::min(rows[r].size(), columns.size()) : rows[r].size();

    std::vector<EditStrip> strips;
    for (std::size_t c = 0; c < columns.size(); ++c) {
        if (m_model->isIntegerColumn(columns[c]))
            continue;
        const auto column = static_cast<std::uint32_t>(columns[c]) + 1;
        for (std::size_t r = 0; r < fitting; ++r) {
            if (c >= rows[r].size())
                continue;
            const std::uint32_t sample = m_view->sampleOfRow(firstRow + static_cast<int>(r));
            const bool goesOn = !strips.empty() && strips.back().run.column == column &&
                                std::uint64_t{strips.back().run.last} + 1 == sample;
            if (!goesOn)
                strips.push_back(valuesStrip(column, sample, {}));
            strips.back().values.push_back(rows[r][c]);
            strips.back().run.last = sample;
        }
    }
    if (!strips.empty())
        addEdit(QStringLiteral("Paste"), std::move(strips));
    if (left > 0)
        statusBar()->showMessage(
            QStringLiteral("Left out, since it lies beyond the table: %1.").arg(valuesText(left)),
            kMessageMs);
}

// -- Saving --

void TsTableView::sl_save()
{
    save();
}

void TsTableView::sl_saveAs()
{
    saveAs();
}

bool TsTableView::save()
{
    commitOpenEditor();
    EditedFile& edited = *m_model->editedFile();
    const std::uint64_t cells = cellsIn(edited.edits().unsavedRuns());
    if (cells == 0)
        return true;
    try {
        // Half-written values are not shown.
        const FrozenView frozen(*m_view);
        JobProgress progress(this, QStringLiteral("Saving %1").arg(m_name));
        const bool done = edited.save(progress.callback()) == JobOutcome::Done;
        statusBar()->showMessage(
            done ? QStringLiteral("%1 saved in %2 s.")
                       .arg(valuesText(cells))
                       .arg(progress.seconds(), 0, 'f', 1)
                 : QStringLiteral("Cancelled: the file is as it was, the edits are not saved."),
            kMessageMs);
        noteFileTime();
        m_model->showChanges();
        return done;
    } catch (const SaveFailed& failure) {
        noteFileTime();
        m_model->showChanges();
        tell(QMessageBox::Warning, QString::fromLocal8Bit(failure.text.c_str()));
        return false;
    }
}

QString TsTableView::askNewName()
{
    const QFileInfo own(m_path);
    const QString suggestion =
        own.exists() ? own.dir().filePath(own.completeBaseName() + QStringLiteral("_edited.ts")) : m_path;
    const QString chosen = QFileDialog::getSaveFileName(this, QStringLiteral("Save as new file"), suggestion,
                                                        QStringLiteral("Ts-files (*.ts)"));
    if (chosen.isEmpty())
        return QString();
    const QFileInfo info(chosen);
    const std::string name = newTsFileName(info.fileName().toLocal8Bit().toStdString());
    QString target = info.absoluteDir().filePath(QString::fromLocal8Bit(name.c_str()));
    const TsApplication* const application = TsApplication::instance();
    if (m_model->editedFile()->isItself(QFile::encodeName(target).toStdString())) {
        tell(QMessageBox::Warning,
             QStringLiteral("This is the file itself. Choose another name, or \"Save\"."));
        return QString();
    }
    // This window itself is a writer of its own file's name, which a lost file may take again.
    if (target != m_path && application != nullptr && application->isOpenForWriting(target)) {
        tell(QMessageBox::Warning, QStringLiteral("The file %1 is open for writing in another window.")
                                       .arg(QFileInfo(target).fileName()));
        return QString();
    }
    // The dialog has asked about the name as it was typed.
    if (target != info.absoluteFilePath() && QFileInfo::exists(target) &&
        !askYesNo(QMessageBox::Question, this, QStringLiteral("Ts-Edit"),
                  QStringLiteral("The file %1 exists. Replace it?").arg(QFileInfo(target).fileName())))
        return QString();
    return target;
}

bool TsTableView::saveAs()
{
    commitOpenEditor();
    const QString target = askNewName();
    if (target.isEmpty())
        return false;
    try {
        JobProgress progress(this, QStringLiteral("Writing %1").arg(QFileInfo(target).fileName()));
        if (m_model->editedFile()->saveAs(target.toLocal8Bit().toStdString(), progress.callback()) ==
            JobOutcome::Cancelled) {
            statusBar()->showMessage(QStringLiteral("Cancelled: no file was made."), kMessageMs);
            return false;
        }
        statusBar()->showMessage(QStringLiteral("%1 written; this window still shows %2.")
                                     .arg(QFileInfo(target).fileName(), m_name),
                                 kMessageMs);
        emit x_directory_changed();
        return true;
    } catch (const SaveFailed& failure) {
        tell(QMessageBox::Warning, QString::fromLocal8Bit(failure.text.c_str()));
        return false;
    }
}

bool TsTableView::mayClose()
{
    commitOpenEditor();
    if (!isEditing() || !m_model->editedFile()->edits().isChanged())
        return true;
    QMessageBox box(QMessageBox::Question, QStringLiteral("Ts-Edit"),
                    QStringLiteral("%1 has edits that are not saved.").arg(m_name), QMessageBox::NoButton,
                    this);
    box.setTextFormat(Qt::PlainText);
    const QAbstractButton* const saving = box.addButton(QStringLiteral("&Save"), QMessageBox::AcceptRole);
    const QAbstractButton* const savingAs =
        box.addButton(QStringLiteral("Save as new file…"), QMessageBox::AcceptRole);
    const QAbstractButton* const discarding =
        box.addButton(QStringLiteral("&Discard"), QMessageBox::DestructiveRole);
    QPushButton* const cancelling = box.addButton(QStringLiteral("&Cancel"), QMessageBox::RejectRole);
    box.setEscapeButton(cancelling);
    box.exec();
    if (box.clickedButton() == saving)
        return save();
    if (box.clickedButton() == savingAs)
        return saveAs();
    return box.clickedButton() == discarding;
}
