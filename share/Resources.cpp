#include "share/Resources.h"

#include <QFile>

void loadResources()
{
    Q_INIT_RESOURCE(veltrac);
}

QString helpText(const QString& name)
{
    loadResources();
    QFile file(QStringLiteral(":/help/%1.html").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}
