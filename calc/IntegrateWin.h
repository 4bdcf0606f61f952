// Ts-Integrate: the running time integral of a column.
#pragma once

#include "calc/CalculusWin.h"

class IntegrateWin : public veltrac::CalculusWin
{
    Q_OBJECT

public:
    explicit IntegrateWin(const QString& file = QString(), unsigned column = 0, QWidget* parent = nullptr);
};
