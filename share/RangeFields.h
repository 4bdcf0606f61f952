// Two fields that choose a range of a file's samples: by sample numbers, by times ("12.5 s", "13:45:30") or
// by shares ("50%").
#pragma once

#include <QWidget>

#include <cstdint>

class QLabel;
class QLineEdit;

namespace veltrac {

class RangeFields : public QWidget
{
    Q_OBJECT

public:
    explicit RangeFields(QWidget* parent = nullptr);

    // The file, of which so many rows hold data; empty for none. The range becomes all of them where the
    // count is another one than before, or `anew`.
    void setFile(const QString& file, std::uint32_t rows, bool anew);
    // Samples in the order of time, from 1, both included.
    void choose(std::uint32_t first, std::uint32_t last);

    std::uint32_t from() const noexcept { return m_from; }
    std::uint32_t to() const noexcept { return m_to; }
    // Why that is no range; empty where it is one.
    const QString& reason() const noexcept { return m_reason; }

signals:
    void x_changed();

private:
    void read();
    std::uint32_t sampleOf(QLineEdit& field);
    std::uint32_t sampleAt(const QString& text);

    QLineEdit* m_first;
    QLineEdit* m_last;
    QLabel* m_remark;
    QString m_file;
    std::uint32_t m_rows = 0;
    std::uint32_t m_from = 1;
    std::uint32_t m_to = 0;
    QString m_reason;
    QString m_note;  // that the local clock skips or repeats a time
};

}  // namespace veltrac
