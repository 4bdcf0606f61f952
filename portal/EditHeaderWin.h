// Shows and edits the header of one ts-file.
//
// Names and descriptions of columns are written as they are edited, the file's texts and times on OK. A new
// count of samples or columns rebuilds the file when its field is left (core/Rebuild.h): the old file stands
// until the new one is complete.
//
// The file may be rebuilt by another window meanwhile: its true counts are asked anew before each change.
#pragma once

#include <optional>

#include "share/FileWatch.h"
#include "share/SubWindow.h"

class QPushButton;
class TSFILE;

namespace veltrac {

class ColumnTable;
class HeaderFields;

}  // namespace veltrac

class EditHeaderWin : public veltrac::SubWindow
{
    Q_OBJECT

public:
    explicit EditHeaderWin(const QString& fileName, QWidget* parent = nullptr);
    ~EditHeaderWin() override;

public slots:
    void sl_fileDescrChanged(const QString& text);
    void sl_timeUnitChanged(const QString& text);
    void sl_sampleTimeChanged(const QString& text);
    void sl_startTimeChanged(const QString& text);
    void sl_samplesChanged(const QString& text);
    void sl_columnsChanged(const QString& text);
    void sl_rowHeight(int height);
    // Reads the columns from the file again.
    void sl_refresh();
    void sl_cellChanged(int row, int column);
    void sl_finished();
    void sl_subwindowGone(subWindow window);

protected:
    bool mayClose() override;
    void changeEvent(QEvent* event) override;

private:
    // Which fields the user has changed: the others keep their bytes in the file.
    struct Edits
    {
        bool description = false;
        bool timeUnit = false;
        bool sampleTime = false;
        bool startTime = false;
        bool startDate = false;

        bool any() const { return description || timeUnit || sampleTime || startTime || startDate; }
    };

    QWidget* createFields();
    QWidget* createTable();
    QWidget* createButtons();
    void readHeader();
    void takeCounts(TSFILE& file);
    void followFile();

    // The user leaves the field of a count, though not to cancel.
    bool isLeftForGood() const;
    // True where the file now has the entered count, or has not got it long since.
    bool applySamples();
    bool applyColumns();
    // Asks before a reduction and rebuilds; false where the file stays as it is. Nothing for a count that
    // stays.
    bool changeCounts(std::optional<unsigned> newSamples, std::optional<unsigned> newColumns);
    bool rebuild(unsigned samples, unsigned columns);
    bool writeFields();
    void setFields(TSFILE& file) const;
    void writeCell(int row, int column);
    void updateState();
    void showInStatusBar(const QString& text);
    void showWarningBox(const QString& title, const QString& text);

    QString m_fileName;   // absolute: the working directory may change meanwhile
    QString m_shownName;  // as the user knows it
    // The file's true counts, and those last entered: a reduction that was refused is not asked again.
    unsigned m_samples = 0;
    unsigned m_columns = 0;
    unsigned m_enteredSamples = 0;
    unsigned m_enteredColumns = 0;
    bool m_isRing = false;
    bool m_isClosing = false;
    Edits m_edits;
    veltrac::FileWatch m_watch;  // of the file as it is shown

    veltrac::HeaderFields* m_fields = nullptr;
    veltrac::ColumnTable* m_table = nullptr;
    QPushButton* m_ok = nullptr;
    QPushButton* m_cancel = nullptr;
};
