#include "converters/SCLWin.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QSplitter>

#include "converters/ImportTexts.h"
#include "converters/LengthTexts.h"
#include "converters/SCLFields.h"
#include "converters/SCLFileList.h"
#include "converters/SCLPreview.h"
#include "core/NumberTexts.h"
#include "core/TsHeader.h"
#include "core/TsNames.h"
#include "share/Boxes.h"
#include "share/Resources.h"

using namespace veltrac;

namespace {

const QString kColumnFilter =
    QStringLiteral("Text files (*.scl *.txt *.dat *.csv *.log *.asc *.gz);;SCL files (*.scl);;All files (*)");
constexpr QSize kColumnWindowSize(1000, 700);

}  // namespace

// -- Building --

SCLWin::SCLWin(const QString& file, QWidget* parent)
    : SubWindow(parent), m_files(new SCLFileList), m_fields(new SCLFields), m_preview(new SCLPreview)
{
    loadResources();
    setWindowIcon(QIcon(QStringLiteral(":img_ReadASCII_3")));
    setWindowTitle(QStringLiteral("Import of single column logs"));
    m_panel =
        new ImportPanel(*this, *this, buildFields(),
                        {"The format of text logs.", "Read the files and tell what is not understood."});
    setCentralWidget(m_panel);
    resize(kColumnWindowSize);

    connect(m_files, &SCLFileList::x_add, this, &SCLWin::sl_add);
    connect(m_files, &SCLFileList::x_remove, this, &SCLWin::sl_remove);
    connect(m_files, &SCLFileList::x_up, this, &SCLWin::sl_up);
    connect(m_files, &SCLFileList::x_down, this, &SCLWin::sl_down);
    connect(m_files, &SCLFileList::x_changed, this, &SCLWin::sl_changed);
    connect(m_files, &SCLFileList::x_selected, this, &SCLWin::sl_show_file);
    connect(m_fields, &SCLFields::x_changed, this, &SCLWin::sl_changed);
    connect(m_fields, &SCLFields::x_skip_changed, this, &SCLWin::sl_skip_changed);
    showFiles(-1);
    if (!file.isEmpty())
        add(file);
}

QWidget* SCLWin::buildFields()
{
    auto* const below = new QSplitter(Qt::Horizontal);
    below->addWidget(m_fields);
    below->addWidget(m_preview);
    below->setStretchFactor(1, 1);
    auto* const all = new QSplitter(Qt::Vertical);
    all->addWidget(m_files);
    all->addWidget(below);
    all->setStretchFactor(1, 1);
    all->setSizes({190, 430});
    return all;
}

// -- Files --

void SCLWin::sl_add()
{
    const QStringList files = QFileDialog::getOpenFileNames(
        this, QStringLiteral("Read text files of one value a line and convert to a ts-file."), QString(),
        kColumnFilter);
    for (const QString& file : files)
        add(file);
    if (m_logs.sources.empty() && files.isEmpty())
        close();
}

void SCLWin::add(const QString& file)
{
    const bool first = m_logs.sources.empty();
    const double step = m_logs.step;
    const Micros start = m_logs.start;
    try {
        m_logs.add(pathOf(file));
    } catch (const std::exception&) {
        showBox(QMessageBox::Warning, this, QStringLiteral("Veltrac"),
                QFileInfo(file).fileName() + QStringLiteral(": ") + importFailure());
        return;
    }
    if (first || start != m_logs.start)
        m_fields->showStart(m_logs);
    if (first) {
        m_fields->showTarget(QFileInfo(file).completeBaseName() + QStringLiteral(".ts"));
        m_fields->showDescription(m_logs);
    }
    if (first || step != m_logs.step)
        m_fields->showStep(m_logs);
    showFiles(static_cast<int>(m_logs.sources.size()) - 1);
    sl_changed();
    m_panel->focusImport();
}

void SCLWin::sl_remove()
{
    const int row = m_files->current();
    if (row < 0)
        return;
    m_logs.remove(static_cast<std::size_t>(row));
    m_fields->showStart(m_logs);
    showFiles(row);
    sl_changed();
}

void SCLWin::sl_up()
{
    move(-1);
}

void SCLWin::sl_down()
{
    move(1);
}

void SCLWin::move(int by)
{
    const int row = m_files->current();
    const int to = row + by;
    if (row < 0 || to < 0 || to >= static_cast<int>(m_logs.sources.size()))
        return;
    std::swap(m_logs.sources[static_cast<std::size_t>(row)], m_logs.sources[static_cast<std::size_t>(to)]);
    showFiles(to);
    sl_changed();
}

void SCLWin::showFiles(int selected)
{
    QStringList paths;
    for (const SCLSource& source : m_logs.sources)
        paths << QFileInfo(shown(source.file.string())).absoluteFilePath();
    m_panel->watch(paths);
    m_files->show(m_logs.sources);
    m_files->select(selected);
    sl_show_file();
}

void SCLWin::sl_show_file()
{
    m_files->enableButtons();
    const int row = m_files->current();
    if (row >= 0 && row < static_cast<int>(m_logs.sources.size()))
        m_preview->show(m_logs.sources[static_cast<std::size_t>(row)], m_logs.skipLines);
    else
        m_preview->clear();
}

// -- Fields --

void SCLWin::sl_skip_changed(std::uint64_t lines)
{
    m_logs.skipLines = lines;
    const bool read = m_panel->attempt([this] { m_logs.detectAgain(); });
    m_fields->showStep(m_logs);
    sl_show_file();
    if (read)
        sl_changed();
    else
        showFindings();
}

void SCLWin::sl_changed()
{
    m_panel->attempt([this] {
        m_fields->read(m_logs);
        m_files->read(m_logs.sources);
    });
    if (fieldsAreGood())
        m_panel->checkQuietly();
    showFindings();
    if (!m_panel->isChecked() && m_panel->problem().isEmpty() && hasFiles() && !m_logs.isRead())
        m_panel->checkLater();
}

bool SCLWin::fieldsAreGood()
{
    return m_fields->validate(hasFiles()) && hasFiles();
}

// -- Check and import --

void SCLWin::showFindings()
{
    const bool good = fieldsAreGood();
    m_files->enableButtons();
    m_panel->offerImport(good, m_files);
    m_panel->showFinding(!m_panel->problem().isEmpty() ? QString()
                         : m_panel->isChecked()        ? summary()
                         : !hasFiles()                 ? QStringLiteral("\"Add...\" chooses the files.")
                         : !good                       ? kMarkedField
                                 : QStringLiteral("Only the beginning of the files has been read. "
                                                  "\"Check only\" reads all of it, and so does "
                                                  "\"Import\"."),
                         QString());
}

QString SCLWin::summary() const
{
    const STLCheck made = m_logs.result();
    std::string text =
        counted(made.target.samples, "row") + ", " + counted(m_logs.sources.size(), "column") + '.';
    if (m_logs.found().missing != 0)
        text += ' ' + counted(m_logs.found().missing, "value") + " missing.";
    text += "\nA sample time of " + lengthText(m_logs.step) + ", " +
            lengthText(m_logs.step * made.target.samples) + " in all, " +
            sizeText(tsFileBytes(made.target.samples, made.target.columns)) + '.';
    for (const std::string& notice : m_logs.notices())
        text += ' ' + notice;
    return QString::fromStdString(text);
}

// -- What the importers differ in --

std::uint64_t SCLWin::fileBytes() const
{
    std::uint64_t bytes = 0;
    for (const SCLSource& source : m_logs.sources) {
        std::error_code unknown;
        const std::uintmax_t size = std::filesystem::file_size(source.file, unknown);
        bytes += unknown ? 0 : size;
    }
    return bytes;
}

QString SCLWin::readingText() const
{
    return QStringLiteral("Reading the files …");
}

JobOutcome SCLWin::check(const Progress& progress)
{
    return m_logs.check(progress);
}

QString SCLWin::doubt() const
{
    const SCLCheck& found = m_logs.found();
    std::uint64_t values = 0;
    for (const std::uint64_t count : found.values)
        values += count;
    if (found.troubleCount * 2 <= values)
        return QString();
    return QString::fromStdString(
        "More than half of the values have troubles: " + groupedDigits(found.troubleCount) + " of " +
        groupedDigits(values) + ".\nImport all the same?");
}

QString SCLWin::targetName() const
{
    return m_fields->target();
}

JobOutcome SCLWin::makeFile(const std::filesystem::path& target, const Progress& progress)
{
    return importSCL(m_logs, target, progress);
}

Importer::Report SCLWin::report() const
{
    QVector<ImportTrouble> troubles;
    for (const SCLTrouble& trouble : m_logs.found().troubles)
        troubles.append({QStringLiteral("%1, line %2")
                             .arg(shown(m_logs.sources[trouble.source].file.filename().string()))
                             .arg(trouble.line),
                         QString::number(trouble.source + 1), QStringLiteral("no number: missing"),
                         QString::fromStdString(trouble.text)});
    return {summary(), troubles, m_logs.found().troubleCount};
}
