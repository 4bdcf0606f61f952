#include "share/Resources.h"

#include <QFile>

// The macro works outside of any namespace alone.
static void initResources()
{
    Q_INIT_RESOURCE(veltrac);
}

namespace veltrac {

void loadResources()
{
    initResources();
}

QString helpText(const QString& name)
{
    loadResources();
    QFile file(QStringLiteral(":/help/%1.html").arg(name));
    if (!file.open(QIODevice::ReadOnly))
        return QString();
    return QString::fromUtf8(file.readAll());
}

}  // namespace veltrac
