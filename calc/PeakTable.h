// The table of a spectrum's highest lines, of the harmonics of a frequency, or of bands.
#pragma once

#include <QWidget>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "calc/BandPower.h"
#include "calc/SpectrumPeaks.h"

class QLabel;
class QTableWidget;

namespace veltrac {

class NumberField;

class PeakTable : public QWidget
{
    Q_OBJECT

public:
    explicit PeakTable(QWidget* parent = nullptr);

    // Lists the highest lines of the file of a spectrum that was computed by the request, or its bands. The
    // mean stands in the title; `unit` is that of the source. Throws the TS exceptions.
    void showSpectrum(const std::filesystem::path& spectrum, const SpectrumRequest& request, double mean,
                      const std::string& unit);
    void clear();

    // Lists the harmonics of the line at a frequency.
    void showHarmonics(double frequency);
    void showPeaks();
    bool showsHarmonics() const noexcept { return !m_harmonics.empty(); }
    const std::vector<SpectrumPeak>& harmonics() const noexcept { return m_harmonics; }
    // "Harmonics of 5 Hz (THD 12.5 %)"
    QString title() const;
    // The frequency of the chosen line, else of the highest; none where there are no lines.
    std::optional<double> chosenFrequency() const;
    // Of a density: tells its power between two frequencies, or nothing where one is missing.
    void showPowerBetween(const std::optional<double>& from, const std::optional<double>& to);

signals:
    // The user has chosen a line.
    void x_chosen(double frequency);
    void x_harmonics_wanted();
    // The table has been filled anew, and shows harmonics no more.
    void x_peaks_shown();
    void x_told(const QString& text);

private:
    void createTable();
    void createChoice();
    void readChoice();
    bool findAgain(const PeakChoice& wanted);
    void setColumns(const QString& value, bool hasPhase, bool hasBands);
    void fill(const std::vector<SpectrumPeak>& peaks, const QString& title);
    void fillBands(TSFILE& bands);
    void addCells(int row, double frequency, const QStringList& cells);
    QString valueText(double value) const;

    QLabel* m_title;
    QWidget* m_choice;
    NumberField* m_prominence;
    NumberField* m_distance;
    QTableWidget* m_table;
    QLabel* m_power;
    std::filesystem::path m_spectrum;
    SpectrumRequest m_request;
    PeakChoice m_wanted;
    double m_mean = 0.0;
    std::string m_unit;
    std::vector<SpectrumPeak> m_peaks;
    std::vector<SpectrumPeak> m_harmonics;
    BandPower m_sums;
};

}  // namespace veltrac
