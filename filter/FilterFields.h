// The filter type and the fields that say what filter of it is meant.
#pragma once

#include <QString>
#include <QVector>
#include <QWidget>

#include "filter/FilterTypes.h"

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;

namespace veltrac {

class NumberField;

class FilterFields : public QWidget
{
    Q_OBJECT

public:
    explicit FilterFields(QWidget* parent = nullptr);

    QComboBox* types() const { return m_types; }
    NumberField* field(FilterField use) const;

    // Chooses a row of filterTypes(): fields that it does not use are disabled, and all keep their texts; the
    // order and the number of points, which share a field, have one each.
    void showType(int type);
    // The sampling frequency of the source; 0 where it has none. Frequencies that nobody has typed follow it.
    void showRate(double samplingHz);

    // Whether every field that counts holds a number.
    bool isValid() const;
    FilterRequest request() const;

signals:
    void x_passChanged();

private:
    struct Row
    {
        FilterField use;
        QLabel* label;
        NumberField* field;
        QLabel* reason;     // beneath the field, what is wrong with it
        QString suggested;  // what stands in the field until the user types
    };
    void showReasons();
    void addPasses(QGridLayout& grid);
    void enablePasses();

    QLabel* m_rate;
    QComboBox* m_types;
    QCheckBox* m_zeroPhase;
    QCheckBox* m_settled;
    QVector<Row> m_rows;
    QString m_otherText = QStringLiteral("11");  // of the one that does not have the shared field now
    bool m_showsPoints = false;
};

}  // namespace veltrac
