// What windows ask of the program, for tests without a main window: files open and are made, one file can be
// marked as open for writing, error texts are kept.
#pragma once

#include <QFileInfo>
#include <QStringList>

#include "portal/TsApplication.h"

class Desk : public TsApplication
{
public:
    Desk() { setInstance(this); }
    void ShowTsError(const char* text) override { errors << QString::fromUtf8(text); }
    bool isOpenForWriting(const QString& path) const override
    {
        return !writer.isEmpty() && QFileInfo(path).fileName() == writer;
    }

    QStringList errors;
    QString writer;
};
