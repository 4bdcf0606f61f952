// The table of a spectrum's highest lines, or of the harmonics of one of them.
#pragma once

#include <QWidget>

#include <filesystem>
#include <vector>

#include "calc/SpectrumPeaks.h"

class QLabel;
class QTableWidget;

namespace veltrac {

class PeakTable : public QWidget
{
    Q_OBJECT

public:
    explicit PeakTable(QWidget* parent = nullptr);

    // Lists the highest lines of the file of a spectrum that was computed by the request. The mean stands in
    // the title. Throws the TS exceptions.
    void showSpectrum(const std::filesystem::path& spectrum, const SpectrumRequest& request, double mean);
    void clear();

public slots:
    // Lists the harmonics of the chosen line, or of the highest; the next time the peaks again.
    void sl_harmonics();

signals:
    // The user has chosen a line.
    void x_chosen(double frequency);
    void x_told(const QString& text);

private:
    void fill(const std::vector<SpectrumPeak>& peaks, const QString& title);
    void fillPeaks();

    QLabel* m_title;
    QTableWidget* m_table;
    std::filesystem::path m_spectrum;
    SpectrumRequest m_request;
    double m_mean = 0.0;
    std::vector<SpectrumPeak> m_peaks;
    bool m_showsHarmonics = false;
};

}  // namespace veltrac
