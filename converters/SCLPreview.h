// The first lines of a single column log, and a picture of its first values.
#pragma once

#include <QSplitter>

#include "converters/SCLSource.h"

class QLabel;
class QPlainTextEdit;

namespace veltrac {

class ValuePlot;

class SCLPreview : public QSplitter
{
    Q_OBJECT

public:
    explicit SCLPreview(QWidget* parent = nullptr);

    // Reads the beginning of the file, below so many lines for the picture; says why where it cannot.
    void show(const SCLSource& source, std::uint64_t skipLines);
    void clear();

private:
    void show(const QString& lines, std::vector<float> values);

    QPlainTextEdit* m_lines;
    ValuePlot* m_plot;
    QLabel* m_caption;
};

}  // namespace veltrac
