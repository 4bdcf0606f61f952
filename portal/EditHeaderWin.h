// Shows and edits the header of one ts-file.
//
// Names and descriptions of columns are written as they are edited, the file's texts and times on OK. A new
// count of samples or columns rebuilds the file when its field is left (core/Rebuild.h): the old file stands
// until the new one is complete.
#pragma once

#include "share/SubWindow.h"

class NumberField;
class QLabel;
class QLineEdit;
class QPushButton;
class QTableWidget;
class TSFILE;

class EditHeaderWin : public SubWindow
{
    Q_OBJECT

public:
    explicit EditHeaderWin(const QString& fileName, QWidget* parent = nullptr);

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

private:
    QWidget* createFields();
    QWidget* createButtons();
    void createTable();
    void readHeader();
    void fillRow(TSFILE& file, int row);
    void warnOfEmptyName(unsigned column);

    void applySamples();
    void applyColumns();
    // Asks before a reduction and rebuilds; false where the file stays as it is.
    bool changeCounts(unsigned samples, unsigned columns);
    bool rebuild(unsigned samples, unsigned columns);
    bool mayWrite();
    bool writeFields();
    void updateState();
    QString sizeReason(double samples, double columns) const;
    void say(const QString& text);

    QString m_fileName;   // absolute: the working directory may change meanwhile
    QString m_shownName;  // as the user knows it
    // The file's true counts, and those last entered: a reduction that was refused is not asked again.
    unsigned m_samples = 0;
    unsigned m_columns = 0;
    unsigned m_enteredSamples = 0;
    unsigned m_enteredColumns = 0;
    bool m_isRing = false;
    bool m_descriptionChanged = false;
    bool m_timeUnitChanged = false;
    bool m_sampleTimeChanged = false;
    bool m_startTimeChanged = false;
    int m_rowHeight;
    int m_emptyNames = 0;

    QLineEdit* m_descriptionField = nullptr;
    QLineEdit* m_timeUnitField = nullptr;
    NumberField* m_sampleTimeField = nullptr;
    NumberField* m_startTimeField = nullptr;
    NumberField* m_samplesField = nullptr;
    NumberField* m_columnsField = nullptr;
    QLabel* m_reason = nullptr;
    QTableWidget* m_table = nullptr;
    QPushButton* m_ok = nullptr;
};
