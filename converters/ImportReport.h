// What a text import has done, with the places that it did not understand.
#pragma once

#include <QDialog>
#include <QString>
#include <QVector>

#include <cstdint>

namespace veltrac {

struct ImportTrouble
{
    QString place;   // "Line 17"
    QString column;  // empty for the whole line
    QString what;
    QString text;  // what stands there
};

class ImportReport : public QDialog
{
    Q_OBJECT

public:
    // With a file, "&Plot" is offered: it ends the dialog as accepted.
    ImportReport(QWidget* parent, const QString& title, const QString& summary,
                 const QVector<ImportTrouble>& troubles, std::uint64_t troubleCount, bool offerPlot);
};

}  // namespace veltrac
