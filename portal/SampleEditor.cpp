#include "portal/SampleEditor.h"

#include <QAction>
#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>

#include <cmath>
#include <limits>
#include <utility>

#include "core/FailureText.h"
#include "core/TsNames.h"
#include "portal/FieldsDialog.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/JobProgress.h"
#include "share/TargetFile.h"

namespace veltrac {

namespace {

std::uint64_t cellsIn(const std::vector<SampleRun>& runs)
{
    std::uint64_t cells = 0;
    for (const SampleRun& run : runs)
        cells += run.count();
    return cells;
}

QString valuesText(std::uint64_t count)
{
    return count == 1 ? QStringLiteral("1 value") : groupedNumber(count) + QStringLiteral(" values");
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

}  // namespace

SampleEditor::SampleEditor(SampleTable* table, QString path)
    : QObject(table), m_table(*table), m_path(std::move(path))
{
}

std::vector<QAction*> SampleEditor::addOperations(QMenu& menu)
{
    std::vector<QAction*> actions;
    for (const BlockOperationRow& row : blockOperations()) {
        QAction* const action = menu.addAction(QString::fromUtf8(row.menuText));
        action->setShortcut(QKeySequence(QString::fromLatin1(row.shortcut)));
        action->setStatusTip(QString::fromUtf8(row.tip));
        action->setWhatsThis(QString::fromUtf8(row.tip));
        connect(action, &QAction::triggered, this, [this, &row] { operate(row); });
        actions.push_back(action);
    }
    return actions;
}

void SampleEditor::commitOpenEditor()
{
    SampleView& view = m_table.view();
    if (QWidget* const focus = QApplication::focusWidget();
        focus != nullptr && focus != &view && view.isAncestorOf(focus))
        view.setFocus();
}

void SampleEditor::addEdit(std::string name, std::vector<EditStrip> strips)
{
    edited().add({std::move(name), std::move(strips)});
    m_table.model().showChanges();
}

void SampleEditor::sl_undo()
{
    const QString name = QString::fromStdString(edits().undoName());
    edited().edits().undo();
    m_table.model().showChanges();
    emit x_status(QStringLiteral("Undone: %1").arg(name));
}

void SampleEditor::sl_redo()
{
    const QString name = QString::fromStdString(edits().redoName());
    edited().edits().redo();
    m_table.model().showChanges();
    emit x_status(QStringLiteral("Done again: %1").arg(name));
}

// -- Blocks --

bool SampleEditor::askNumbers(const BlockOperationRow& operation, std::uint64_t cells,
                              std::vector<double>& numbers)
{
    if (operation.fields.empty())
        return true;
    FieldsDialog dialog(
        QString::fromUtf8(operation.name),
        QStringLiteral("%1 (%2 selected).").arg(QString::fromUtf8(operation.tip), valuesText(cells)),
        operation.fields, numbers, &m_table);
    dialog.setCheck([&](const std::vector<double>& all) {
        return QString::fromStdString(whyRefused(operation.operation, all));
    });
    if (dialog.exec() != QDialog::Accepted)
        return false;
    numbers = dialog.numbers();
    return true;
}

void SampleEditor::operate(const BlockOperationRow& operation)
{
    const std::vector<SampleRun> runs = m_table.selectedRuns();
    if (runs.empty()) {
        emit x_status(QStringLiteral("No value that can be changed is selected."));
        return;
    }
    const bool alongTime =
        operation.operation == BlockOperation::Ramp || operation.operation == BlockOperation::Interpolate;
    if (m_table.view().rows().isSorted() && alongTime) {
        emit x_status(QStringLiteral("Switch sorting off first: this works along the time."));
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
        JobProgress progress(&m_table, name);
        if (makeStrips(operation.operation, runs, numbers,
                       static_cast<std::uint32_t>(m_table.model().rowCount()), m_table.readerOfColumn(),
                       progress.callback(), strips) == JobOutcome::Cancelled)
            return;
    } catch (...) {
        emit x_failed(QStringLiteral("%1: %2.").arg(name, QString::fromStdString(reasonOfFailure())));
        return;
    }
    if (strips.empty())
        emit x_status(QStringLiteral("%1: there is nothing to change.").arg(name));
    else
        addEdit(operation.name, std::move(strips));
}

// Where a ramp begins and ends as long as the user wants nothing else.
std::vector<double> SampleEditor::endValues(const SampleRun& run) const
{
    std::vector<double> values;
    for (const std::uint32_t sample : {run.first, run.last})
        values.push_back(
            static_cast<double>(m_table.model()
                                    .value(static_cast<int>(sample) - 1, static_cast<int>(run.column) - 1)
                                    .value_or(std::numeric_limits<float>::quiet_NaN())));
    return values;
}

// -- Pasting --

void SampleEditor::sl_paste()
{
    const QString text = QApplication::clipboard()->text();
    if (text.isEmpty()) {
        emit x_status(QStringLiteral("The clipboard holds no text."));
        return;
    }
    const PastedTable table = parsePasted(text.toStdString());
    if (table.rows.empty()) {
        emit x_failed(QStringLiteral("\"%1\" is not a number. Nothing was pasted.")
                          .arg(QString::fromStdString(table.refused).left(60)));
        return;
    }
    const bool single = table.rows.size() == 1 && table.rows.front().size() == 1;
    const std::vector<SampleRun> runs = m_table.selectedRuns();
    if (single && cellsIn(runs) > 1) {
        std::vector<EditStrip> strips;
        strips.reserve(runs.size());
        for (const SampleRun& run : runs)
            strips.push_back(setStrip(run, static_cast<double>(table.rows.front().front())));
        addEdit("Paste", std::move(strips));
    } else {
        pasteRows(table.rows);
    }
}

// From the current cell on, over the columns that are shown; what finds no place is left out and told.
void SampleEditor::pasteRows(const std::vector<std::vector<float>>& rows)
{
    const TsTableModel& model = m_table.model();
    const SampleView& view = m_table.view();
    std::vector<std::uint32_t> columns;
    for (const int column : m_table.visibleColumns(view.currentColumn(), model.columnCount() - 1))
        columns.push_back(model.isIntegerColumn(column) ? 0 : static_cast<std::uint32_t>(column) + 1);
    std::vector<std::uint32_t> samples;
    for (int row = view.currentRow(); row < view.rows().total() && samples.size() < rows.size(); ++row)
        samples.push_back(view.rows().sampleOf(row));
    PastedStrips pasted = pasteStrips(rows, samples, columns);
    if (!pasted.strips.empty())
        addEdit("Paste", std::move(pasted.strips));
    QStringList left;
    if (pasted.beyond > 0)
        left << QStringLiteral("%1 beyond the table").arg(valuesText(pasted.beyond));
    if (pasted.refused > 0)
        left << QStringLiteral("%1 on \"Time32\"").arg(valuesText(pasted.refused));
    if (!left.isEmpty())
        emit x_status(QStringLiteral("Left out: %1.").arg(left.join(QStringLiteral(", "))));
}

// -- Saving --

void SampleEditor::sl_save()
{
    save();
}

void SampleEditor::sl_saveAs()
{
    saveAs();
}

// Shows the first of the values in question where the user wants to look.
EditedFile::Choice SampleEditor::askWhoWins(const EditConflict& conflict)
{
    QString text = QStringLiteral("Another program has changed %1 since it was read.\n").arg(m_table.name());
    if (conflict.changed > 0)
        text += QStringLiteral("%1 that you have edited:").arg(valuesText(conflict.changed));
    for (const EditConflict::Cell& cell : conflict.cells)
        text += QStringLiteral("\ncolumn %1, sample %2: was %3, is %4")
                    .arg(cell.column)
                    .arg(m_table.sampleText(cell.sample))
                    .arg(static_cast<double>(cell.read), 0, 'g', 9)
                    .arg(static_cast<double>(cell.now), 0, 'g', 9);
    if (conflict.changed > conflict.cells.size())
        text += QStringLiteral("\nand %1 more").arg(groupedNumber(conflict.changed - conflict.cells.size()));
    if (conflict.unknown > 0)
        text +=
            QStringLiteral(
                "\nWhether the %1 that you have edited in long blocks are among its changes is not known.")
                .arg(valuesText(conflict.unknown));
    QMessageBox box(QMessageBox::Question, QStringLiteral("Ts-Edit"), text, QMessageBox::NoButton, &m_table);
    box.setTextFormat(Qt::PlainText);
    const QAbstractButton* const mine = box.addButton(QStringLiteral("Save &mine"), QMessageBox::AcceptRole);
    // Of a long block it is not known which values are theirs.
    const QAbstractButton* const theirs =
        conflict.unknown == 0 ? box.addButton(QStringLiteral("Keep &theirs"), QMessageBox::AcceptRole)
                              : nullptr;
    QPushButton* const looking = box.addButton(QStringLiteral("&Look first"), QMessageBox::RejectRole);
    box.setDefaultButton(looking);
    box.setEscapeButton(looking);
    box.exec();
    if (box.clickedButton() == mine)
        return EditedFile::Choice::Mine;
    if (theirs != nullptr && box.clickedButton() == theirs)
        return EditedFile::Choice::Theirs;
    if (!conflict.cells.empty())
        m_table.goToSample(conflict.cells.front().sample);
    return EditedFile::Choice::Look;
}

bool SampleEditor::save()
{
    commitOpenEditor();
    const std::uint64_t cells = cellsIn(edits().unsavedRuns());
    if (cells == 0)
        return true;
    bool done = false;
    QString failure;
    try {
        // Half-written values are not shown.
        const FrozenView frozen(m_table.view());
        JobProgress progress(&m_table, QStringLiteral("Saving %1").arg(m_table.name()));
        const auto ask = [this](const EditConflict& conflict) { return askWhoWins(conflict); };
        done = edited().save(progress.callback(), ask) == JobOutcome::Done;
        emit x_status(done ? QStringLiteral("%1 saved in %2 s.")
                                 .arg(valuesText(cells))
                                 .arg(progress.seconds(), 0, 'f', 1)
                           : QStringLiteral("Cancelled: the file is as it was, the edits are not saved."));
    } catch (const SaveFailed& e) {
        failure = QString::fromLocal8Bit(e.text.c_str());
    }
    emit x_written();
    m_table.model().showChanges();
    if (!failure.isEmpty())
        emit x_failed(failure);
    return done;
}

QString SampleEditor::askNewName()
{
    const QFileInfo own(m_path);
    const QString suggestion =
        own.exists() ? own.dir().filePath(own.completeBaseName() + QStringLiteral("_edited.ts")) : m_path;
    const auto isItself = [this](const QString& file) {
        return edited().isItself(QFile::encodeName(file).toStdString());
    };
    // A lost file may take its own name again.
    return askSaveName(&m_table, {QStringLiteral("Save as new file"), suggestion,
                                  QStringLiteral("Ts-files (*.ts)"), QStringLiteral("ts"), isItself, m_path});
}

bool SampleEditor::saveAs()
{
    commitOpenEditor();
    const QString target = askNewName();
    if (target.isEmpty())
        return false;
    const QString name = QFileInfo(target).fileName();
    try {
        JobProgress progress(&m_table, QStringLiteral("Writing %1").arg(name));
        if (edited().saveAs(target.toLocal8Bit().toStdString(), progress.callback()) ==
            JobOutcome::Cancelled) {
            emit x_status(QStringLiteral("Cancelled: no file was made."));
            return false;
        }
    } catch (const SaveFailed& failure) {
        emit x_failed(QString::fromLocal8Bit(failure.text.c_str()));
        return false;
    }
    emit x_status(QStringLiteral("%1 written; this window still shows %2.").arg(name, m_table.name()));
    emit x_file_made();
    return true;
}

bool SampleEditor::mayClose()
{
    commitOpenEditor();
    if (!isChanged())
        return true;
    QMessageBox box(QMessageBox::Question, QStringLiteral("Ts-Edit"),
                    QStringLiteral("%1 has edits that are not saved.").arg(m_table.name()),
                    QMessageBox::NoButton, &m_table);
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

}  // namespace veltrac
