// The box "Veltrac error" with its one button "Ok".
//
// A formula reports a division by zero, or a missing argument, once for each sample. For these two texts the
// box offers to be silent until the next calculation begins.
#pragma once

#include <QPointer>
#include <QStringList>
#include <QWidget>

#include <cstdint>

namespace veltrac {

class ErrorBox
{
public:
    // Stands over the window that the user works in, or over `otherwise` where there is none.
    void show(QWidget* otherwise, const QString& text);
    // That window.
    QWidget* inFront(QWidget* otherwise);

private:
    bool isSilenced(const QString& text) const;

    QPointer<QWidget> m_front;
    QStringList m_silenced;
    std::uint64_t m_silencedJob = 0;  // the calculation in which they are
};

}  // namespace veltrac
