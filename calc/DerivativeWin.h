// Ts-Derivative: d(column)/dt.
#pragma once

#include "calc/CalculusWin.h"

class DerivativeWin : public veltrac::CalculusWin
{
    Q_OBJECT

public:
    explicit DerivativeWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
};
