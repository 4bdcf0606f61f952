// The fields of Ts-FFT for two channels: the second column, what is computed of both, and the lags of a
// correlation, which needs no second one.
#pragma once

#include <QWidget>

#include "calc/Correlation.h"
#include "calc/SpectrumMethod.h"
#include "calc/TwoChannels.h"

class QCheckBox;
class QComboBox;
class QFormLayout;

namespace veltrac {

class ColumnCombo;
class FileCombo;
class NumberField;

class SecondColumnFields : public QWidget
{
    Q_OBJECT

public:
    explicit SecondColumnFields(QWidget* parent = nullptr);

    void setMethod(SpectrumMethod method);
    // The first channel's file and range, beside which the second is looked for.
    void setSource(const QString& file, const SpectrumRequest& range);

    bool isOn() const;
    // Whether two channels are computed, rather than a spectrum of one.
    bool hasTwoChannels() const { return isOn() && m_method != SpectrumMethod::Correlation; }
    // The second's file; the source itself where it is off.
    QString file() const;
    unsigned column() const;

    // What the fields ask for of a range of the source; the match is looked for anew.
    TwoChannelRequest twoChannels(const SpectrumRequest& request) const;
    CorrelationRequest correlation(const SpectrumRequest& request) const;
    // How the two channels are lined up; empty where they are of one file.
    QString matchWords() const { return QString::fromStdString(m_match.words); }

    // Why that cannot be, and the field to be marked; empty where it can.
    QString findReason(const SpectrumRequest& request, QWidget*& field) const;
    // What will be computed.
    QString planText(const SpectrumRequest& request) const;

signals:
    void x_changed();

protected:
    void changeEvent(QEvent* event) override;

private:
    void addRow(QFormLayout& form, const char* label, QWidget* field, const char* whatsThis);
    void showRows();
    void look();
    SpectrumRequest matched(SpectrumRequest request) const;

    QCheckBox* m_on;
    FileCombo* m_files;
    ColumnCombo* m_columns;
    QComboBox* m_result;
    QCheckBox* m_unwrapped;
    QComboBox* m_scale;
    NumberField* m_lag;
    SpectrumMethod m_method = SpectrumMethod::WholeRange;
    QString m_source;
    SpectrumRequest m_range;
    ChannelMatch m_match;
};

}  // namespace veltrac
