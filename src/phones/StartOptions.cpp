#include "StartOptions.h"

QStringList StartOptions::arguments() const
{
    QStringList arguments;
    if (coldBoot)
        arguments << QStringLiteral("-no-snapshot-load");
    else if (!snapshot.isEmpty())
        arguments << QStringLiteral("-snapshot") << snapshot;
    if (noSnapshot)
        arguments << QStringLiteral("-no-snapshot");
    if (wipeData)
        arguments << QStringLiteral("-wipe-data");
    if (scale != QLatin1String("Default"))
        arguments << QStringLiteral("-scale") << scale;
    arguments << QStringLiteral("-gpu") << gpu;
    return arguments;
}
