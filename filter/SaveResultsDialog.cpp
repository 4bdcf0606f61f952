#include "filter/SaveResultsDialog.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "core/TsNames.h"
#include "share/SourceChooser.h"
#include "share/TargetFile.h"

using namespace veltrac;

namespace {

}  // namespace

SaveResultsDialog::SaveResultsDialog(const QString& sourceFile, const QString& suggestedFile, QWidget* parent)
    : QDialog(parent),
      m_source(sourceFile),
      m_method(new QComboBox(this)),
      m_fileRow(new QWidget(this)),
      m_file(new QLineEdit(suggestedFile, m_fileRow)),
      m_inputLabel(new QLabel(QStringLiteral("&Input column:"), this)),
      m_input(new ColumnCombo(this)),
      m_outputLabel(new QLabel(QStringLiteral("C&olumn:"), this)),
      m_output(new ColumnCombo(this)),
      m_note(new QLabel(this)),
      m_save(new QPushButton(QStringLiteral("&Save"), this))
{
    setWindowTitle(QStringLiteral("Save results"));
    m_method->addItems({QStringLiteral("Save results to an existing or new file"),
                        QStringLiteral("Save results to a column in the source file")});
    m_note->setWordWrap(true);
    m_note->setMinimumWidth(420);
    m_inputLabel->setBuddy(m_input);
    m_outputLabel->setBuddy(m_output);
    auto* const browse = new QPushButton(QStringLiteral("&Browse..."), m_fileRow);
    auto* const row = new QHBoxLayout(m_fileRow);
    row->setContentsMargins(0, 0, 0, 0);
    row->addWidget(m_file, 1);
    row->addWidget(browse);

    auto* const form = new QFormLayout;
    form->addRow(QStringLiteral("&Method:"), m_method);
    auto* const fileLabel = new QLabel(QStringLiteral("&File:"), this);
    fileLabel->setBuddy(m_file);
    form->addRow(fileLabel, m_fileRow);
    form->addRow(m_inputLabel, m_input);
    form->addRow(m_outputLabel, m_output);
    auto* const buttons = new QDialogButtonBox(this);
    buttons->addButton(m_save, QDialogButtonBox::AcceptRole);
    auto* const cancel = buttons->addButton(QStringLiteral("&Cancel"), QDialogButtonBox::RejectRole);
    auto* const layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(m_note);
    layout->addStretch(1);
    layout->addWidget(buttons);

    m_file->setAccessibleName(QStringLiteral("File"));
    connect(m_method, SIGNAL(activated(int)), this, SLOT(sl_methodSelected(int)));
    connect(m_output, SIGNAL(activated(int)), this, SLOT(sl_cbResultColActivated(int)));
    connect(m_input, qOverload<int>(&QComboBox::activated), this, [this] { showState(); });
    connect(m_file, &QLineEdit::textChanged, this, [this] { sl_methodSelected(m_method->currentIndex()); });
    connect(browse, &QPushButton::clicked, this, &SaveResultsDialog::sl_chooseFile);
    connect(m_save, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &SaveResultsDialog::sl_finished);
    m_save->setDefault(true);
    sl_methodSelected(ToFile);
}

SaveResultsDialog::Method SaveResultsDialog::method() const
{
    return m_method->currentIndex() == 0 ? ToFile : ToSourceColumn;
}

QString SaveResultsDialog::file() const
{
    QString typed = m_file->text().trimmed();
    if (typed.isEmpty())
        return typed;
    const QFileInfo info(typed);
    if (info.suffix().toLower() == QLatin1String("ts"))
        return typed;
    const QString name =
        QFile::decodeName(newTsFileName(QFile::encodeName(info.fileName()).toStdString()).c_str());
    return info.path() == QLatin1String(".") ? name : info.path() + QLatin1Char('/') + name;
}

bool SaveResultsDialog::fileExists() const
{
    return !file().isEmpty() && QFileInfo::exists(file());
}

unsigned SaveResultsDialog::inputColumn() const
{
    return method() == ToFile ? m_input->column() : 0;
}

unsigned SaveResultsDialog::outputColumn() const
{
    return m_output->column();
}

void SaveResultsDialog::sl_methodSelected(int chosen)
{
    m_method->setCurrentIndex(chosen);
    const bool toFile = method() == ToFile;
    const QString shown = toFile ? (fileExists() ? file() : QString()) : m_source;
    m_input->showFile(toFile ? shown : QString(), false);
    m_output->showFile(shown, false);
    if (toFile && m_output->count() > 1)
        m_output->setCurrentIndex(1);
    if (!toFile) {
        m_output->addItem(QStringLiteral("New column"), 0U);
        m_output->setCurrentIndex(m_output->count() - 1);
    }
    showState();
}

void SaveResultsDialog::sl_cbResultColActivated(int index)
{
    m_output->setCurrentIndex(index);
    showState();
}

void SaveResultsDialog::showState()
{
    const bool toFile = method() == ToFile;
    const bool existing = toFile && fileExists();
    m_fileRow->setEnabled(toFile);
    m_inputLabel->setEnabled(existing);
    m_input->setEnabled(existing);
    m_outputLabel->setEnabled(existing || !toFile);
    m_output->setEnabled(existing || !toFile);
    QString note;
    bool good = true;
    if (toFile && file().isEmpty()) {
        note = QStringLiteral("Choose a file.");
        good = false;
    } else if (existing && m_output->count() < 2) {
        note = QStringLiteral("%1 is no ts-file with two columns that could take the results.").arg(file());
        good = false;
    } else if (existing && m_input->column() == m_output->column()) {
        note = QStringLiteral("Input and result need two different columns.");
        good = false;
    } else if (existing) {
        note = QStringLiteral(
                   "The file exists: the input replaces column %1, the result column %2. Its other columns "
                   "stay.")
                   .arg(m_input->currentText(), m_output->currentText());
    } else if (toFile) {
        note = QStringLiteral("A new file: the input is column 1, the result column 2.");
    } else if (m_output->column() == 0) {
        note = QStringLiteral("%1 gets one column more.").arg(QFileInfo(m_source).fileName());
    } else {
        note = QStringLiteral("The result replaces column %1 of %2.")
                   .arg(m_output->currentText(), QFileInfo(m_source).fileName());
    }
    m_note->setText(note);
    m_save->setEnabled(good);
}

void SaveResultsDialog::sl_chooseFile()
{
    const QString name =
        QFileDialog::getSaveFileName(this, QStringLiteral("Save results"), saveSuggestion(m_file->text()),
                                     kTsFileFilter, nullptr, QFileDialog::DontConfirmOverwrite);
    m_fileDialogCancelled = name.isEmpty();
    if (!name.isEmpty())
        m_file->setText(name);
    else
        m_note->setText(QStringLiteral("Saving aborted"));
}

void SaveResultsDialog::sl_finished()
{
    reject();
}
