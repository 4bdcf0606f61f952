// Asks where a filter's results go: to a file, new or existing, or to a column of the source file.
#pragma once

#include <QDialog>

class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;

namespace veltrac {

class ColumnCombo;

}  // namespace veltrac

class SaveResultsDialog : public QDialog
{
    Q_OBJECT

public:
    enum Method { ToFile, ToSourceColumn };

    // The source file by its path, and the name that a new file is offered under.
    SaveResultsDialog(const QString& sourceFile, const QString& suggestedFile, QWidget* parent);

    Method method() const;
    // For ToFile: the chosen file, with its extension; it may exist.
    QString file() const;
    // Columns of the existing file, or of the source file, from 1; 0 in the output means a new column.
    unsigned inputColumn() const;
    unsigned outputColumn() const;
    // The file dialog was cancelled, and nothing chosen after that.
    bool fileDialogCancelled() const { return m_fileDialogCancelled; }

public slots:
    void sl_methodSelected(int method);
    void sl_cbResultColActivated(int index);
    void sl_chooseFile();
    void sl_finished();

private:
    void showState();
    bool fileExists() const;

    QString m_source;
    QComboBox* m_method;
    QWidget* m_fileRow;
    QLineEdit* m_file;
    QLabel* m_inputLabel;
    veltrac::ColumnCombo* m_input;
    QLabel* m_outputLabel;
    veltrac::ColumnCombo* m_output;
    QLabel* m_note;
    QPushButton* m_save;
    bool m_fileDialogCancelled = false;
};
