// Every window and dialog of the program, opened one after the other on a file of three columns.
#pragma once

#include <gtest/gtest.h>

#include <QColor>
#include <QDialog>
#include <QPointer>
#include <QString>
#include <QWidget>

#include <functional>
#include <string>
#include <vector>

#include "portal/TsApplication.h"
#include "share/PsParameters.h"
#include "tests/core/TsFileBytes.h"

namespace veltrac {

class EveryWindow : public testing::Test
{
protected:
    using Look = std::function<void(QWidget& window, const std::string& title)>;

    EveryWindow();
    static QWidget* mainWindow();
    // Calls `look` with each window while it is shown, and closes it again.
    void forEachWindow(const Look& look);
    // What a sub-program of that kind works on here.
    QString fileOf(SubProgram kind) const;
    static void show(QWidget* window, const Look& look);
    // Those of forEachWindow() that are asked by a function of their own.
    void forEachDialog(const Look& look);

private:
    void lookAtPlotsOfValues(const Look& look);
    static void showAsked(const std::function<void()>& ask, const Look& look);

    const QString m_file = QStringLiteral("bed 3.ts");
    const TestDirectory m_directory;
    PsParameters m_settings;
    std::vector<QColor> m_colors{Qt::darkBlue, Qt::darkRed, Qt::darkGreen};
};

}  // namespace veltrac
