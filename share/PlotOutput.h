// A plot that goes to the clipboard, to picture files and to paper.
#pragma once

#include <QPointer>
#include <QString>

#include "share/PictureSaving.h"
#include "share/PlotView.h"
#include "share/PsParameters.h"

class PsConfigDialog;

namespace veltrac {

class PlotOutput : public PlotView
{
    Q_OBJECT

public:
    explicit PlotOutput(QWidget* parent = nullptr);

    // The settings that hard copies use; the window's own copy of the main window's record.
    PsParameters& psParameters() noexcept { return m_psParameters; }
    // What hard copies and pictures are called by default, without an extension.
    void setSuggestedName(const QString& name) { m_suggestedName = name; }

public slots:
    void sl_copyReadout();
    void sl_copyPicture();
    void sl_hardCopy();
    void sl_hardCopyWithCursors();
    void sl_savePicture();
    void sl_print();
    void sl_psParameters();

private:
    void hardCopyOf(bool withCursors);

    PsParameters m_psParameters;
    QPointer<PsConfigDialog> m_psDialog;  // while it is open
    PictureRequest m_pictureRequest;      // as the dialog was left; without a size before it was open
    QString m_suggestedName = QStringLiteral("plot");
};

}  // namespace veltrac
