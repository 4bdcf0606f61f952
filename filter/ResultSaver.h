// Saves a filter's results where the user has chosen in SaveResultsDialog, and asks what has to be asked.
#pragma once

#include <QString>

#include <filesystem>

#include "core/Progress.h"
#include "filter/SaveResults.h"

class QWidget;
class SaveResultsDialog;

namespace veltrac {

class ResultSaver
{
public:
    enum class Outcome { Saved, Aborted, Failed };

    // `work` is the file of the results, `source` the absolute path of what they were made of, from its
    // sample `first` on. Boxes stand before `window`, which is borrowed.
    ResultSaver(QWidget* window, std::filesystem::path work, QString source, std::uint32_t first);

    Outcome save(const SaveResultsDialog& dialog);
    // What the status bar says.
    QString summary(Outcome outcome) const;
    // The name of a file that was made in the working directory; empty where none was.
    const QString& madeFile() const noexcept { return m_made; }

private:
    Outcome saveToNew();
    Outcome saveToNewColumn();
    Outcome saveToColumnsOf(const ResultColumns& columns);
    bool mayTakeResults();
    bool agrees(std::uint32_t& count);
    bool ask(const QString& question);

    QWidget* m_window;
    std::filesystem::path m_work;
    QString m_source;
    std::uint32_t m_first;
    QString m_file;   // that the results go to
    QString m_shown;  // as messages name it
    QString m_made;
};

}  // namespace veltrac
