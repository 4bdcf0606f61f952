// "PostScript parameters": edits a record in place, for the main window and for plot windows.
#pragma once

#include <QMainWindow>

#include <functional>
#include <vector>

#include "share/PsParameters.h"

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;

namespace veltrac {

class NumberField;

}  // namespace veltrac

class PsConfigDialog : public QMainWindow
{
    Q_OBJECT

public:
    // The record is borrowed: `owner`, whose window the dialog is, keeps it as long as it lives. Deletes
    // itself when it is closed.
    explicit PsConfigDialog(PsParameters* parameters, QWidget* owner = nullptr);

signals:
    // The record has new values.
    void x_applied();

public slots:
    // Text that is no number, or no sensible one, is marked; the record is left as it was then.
    void sl_apply();
    // Applies, and closes when that worked.
    void sl_finished();

private:
    QWidget* makeTextGroup();
    QWidget* makePageGroup();
    QWidget* makeGridGroup();
    QWidget* makeButtons();
    veltrac::NumberField* addField(QFormLayout* form, const QString& label, const QString& text, double least,
                                   double most, bool isWhole);
    bool apply();
    bool fieldsAreValid();
    bool marginsLeaveRoom() const;

    PsParameters* m_parameters;
    QComboBox* m_font = nullptr;
    veltrac::NumberField* m_fontSize = nullptr;
    veltrac::NumberField* m_lineWidth = nullptr;
    std::vector<veltrac::NumberField*> m_margins;  // in the record's order
    QCheckBox* m_eps = nullptr;
    QCheckBox* m_portrait = nullptr;
    QComboBox* m_paper = nullptr;
    veltrac::NumberField* m_gray = nullptr;
    veltrac::NumberField* m_black = nullptr;
    veltrac::NumberField* m_dotted = nullptr;
    QLabel* m_reason = nullptr;
    std::vector<veltrac::NumberField*> m_fields;  // all of them, from top to bottom
};
