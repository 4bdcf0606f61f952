// One press of "Calculate" in Ts-Edit, and of "Undo calculation": what it needs of the rows, what it asks and
// what is to be told of it afterwards.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <memory>

#include "formula/CalculationUndo.h"
#include "formula/SourceTable.h"

namespace veltrac {

// What a formula was read as and a user may not have meant, each in words, and where its clocks differ.
QStringList readingsOf(const FormulaParser& parser);
// "x2 starts 3 600 s later by its clock: …" where the rows' startSeconds differ from the target's; else
// empty.
QString clockDifferences(const std::vector<const EditVariable*>& rows, const EditVariable& target);

class ColumnCalculation
{
public:
    // What to tell; an empty text tells nothing.
    struct Answer
    {
        QString box;              // what could not be done, for a message box
        QString status;           // for the status bar
        QString notice;           // for the info bar
        bool hasChanged = false;  // the file
    };

    // Borrows both.
    ColumnCalculation(SourceTable& sources, QWidget* window) : m_sources(sources), m_window(window) {}

    // Computes the target's column by a formula of at most kFormulaBytes. Once it is done, the values before
    // are kept until the next one is done or this object goes.
    Answer calculate(EditVariable& target, const QByteArray& formula);

    bool canUndo() const noexcept { return m_undo != nullptr; }
    // Puts the values before the last calculation back.
    Answer undo();

private:
    Answer refused(const QString& text) const;
    QString whyNot(const EditVariable& target, const std::vector<const EditVariable*>& rows) const;
    CalculationRange rangeFor(const EditVariable& target, const std::vector<const EditVariable*>& rows,
                              QString& reason) const;
    Answer told(const EditVariable& target, const FormulaParser& formula, const CalculationRange& range,
                const CalculationReport& report, double seconds) const;
    Answer run(const EditVariable& target, FormulaParser& formula, const CalculationRange& range);
    TSFILE& reopenTarget(const EditVariable& target);

    SourceTable& m_sources;
    QWidget* m_window;
    std::unique_ptr<CalculationUndo> m_undo;
};

}  // namespace veltrac
