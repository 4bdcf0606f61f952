#include "calc/SpectrumDoubts.h"

#include <QPushButton>

#include <unistd.h>

#include <algorithm>
#include <cmath>

#include "calc/Spectrum.h"
#include "calc/SpectrumSamples.h"
#include "calc/SpectrumTexts.h"
#include "core/TsHeader.h"
#include "share/Boxes.h"
#include "share/GroupedNumber.h"
#include "share/HeaderText.h"
#include "share/JobProgress.h"

namespace veltrac {

namespace {

constexpr double kEqualSteps = 0.001;  // of a step

std::uint64_t machineMemory()
{
    return static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
           static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

bool askToGoOn(QWidget* window, const QString& text, const QString& yes)
{
    QMessageBox box(QMessageBox::Question, window->windowTitle(), text, QMessageBox::NoButton, window);
    box.setTextFormat(Qt::PlainText);
    QPushButton* const go = box.addButton(yes, QMessageBox::AcceptRole);
    QPushButton* const cancel = box.addButton(QStringLiteral("Cancel"), QMessageBox::RejectRole);
    box.setDefaultButton(go);
    box.setEscapeButton(cancel);
    box.exec();
    return box.clickedButton() == go;
}

bool askAboutMissing(QWidget* window, TSFILE& source, SpectrumRequest& request)
{
    std::uint64_t missing = 0;
    {
        JobProgress progress(window, QStringLiteral("Looking for missing values"));
        if (countMissing(source, request, missing, progress.callback()) == JobOutcome::Cancelled)
            return false;
    }
    if (missing == 0)
        return true;
    const QString column = headerText(source.columnName(request.column));
    if (missing == std::uint64_t{request.to} - request.from + 1) {
        showBox(QMessageBox::Warning, window, window->windowTitle(),
                QStringLiteral("Column %1 has no values in the range.").arg(column));
        return false;
    }
    request.interpolate = true;
    return askToGoOn(
        window,
        QStringLiteral("Column %1 has %2 missing values in the range.").arg(column, groupedNumber(missing)),
        QStringLiteral("Interpolate"));
}

bool askAboutSteps(QWidget* window, TSFILE& source, const QString& fileName, SpectrumRequest& request)
{
    if (source.timeColumn() == 0)
        return true;
    StepRange steps;
    {
        JobProgress progress(window, QStringLiteral("Looking at the steps of time"));
        if (readSteps(source, request.from, request.to, steps, progress.callback()) == JobOutcome::Cancelled)
            return false;
    }
    if (!(steps.mean > 0.0) || !std::isfinite(steps.mean)) {
        showBox(QMessageBox::Warning, window, window->windowTitle(),
                QStringLiteral("The times of %1 do not rise; there is no spectrum of them.").arg(fileName));
        return false;
    }
    request.dt = steps.mean;
    const double spread = steps.greatest - steps.least;
    if (spread <= kEqualSteps * steps.mean + steps.grain)
        return true;
    // As many decimals as tell the steps apart.
    const int decimals = std::clamp(static_cast<int>(-std::floor(std::log10(spread))), 2, 12);
    const auto text = [decimals](double seconds) { return QString::number(seconds, 'f', decimals); };
    return askToGoOn(window,
                     QStringLiteral("The steps of %1 are not equal (%2 to %3 s). The spectrum assumes %4 s.")
                         .arg(fileName, text(steps.least), text(steps.greatest), text(steps.mean)),
                     QStringLiteral("Continue"));
}

bool askAboutMemory(QWidget* window, SpectrumRequest& request)
{
    if (request.averaged)
        return true;
    const SpectrumPlan plan = planSpectrum(request);
    QString doubt;
    if (plan.bytes > machineMemory() / 4)
        doubt = QStringLiteral("Whole range needs %1.").arg(memoryText(plan.bytes));
    else if (tsFileBytes(plan.bins, spectrumColumns(request)) >= kFileLimit)
        doubt = QStringLiteral("The spectrum of the whole range is more than the 2 GB of a ts-file.");
    if (doubt.isEmpty())
        return true;
    request.averaged = true;
    return askToGoOn(window, doubt + QStringLiteral(" Use averaged segments?"), QStringLiteral("Yes"));
}

}  // namespace

bool clearDoubts(QWidget* window, TSFILE& source, const QString& fileName, SpectrumRequest& request)
{
    // The one that needs no look at the samples comes first.
    return askAboutMemory(window, request) && askAboutMissing(window, source, request) &&
           askAboutSteps(window, source, fileName, request);
}

}  // namespace veltrac
