// The box "Veltrac error" with its one button "Ok".
//
// A formula reports a division by zero, or a missing argument, once for each sample. For these two texts the
// box offers to be silent until the next calculation begins.
#pragma once

#include <QStringList>

#include <cstdint>

class QWidget;

class ErrorBox
{
public:
    void show(QWidget* parent, const QString& text);

private:
    bool isSilenced(const QString& text) const;

    QStringList m_silenced;
    std::uint64_t m_silencedJob = 0;  // the calculation in which they are
};
