#include "SystemImage.h"

#include <QHashFunctions>

QString SystemImage::androidName() const
{
    switch (api) {
    case 33:
        return QStringLiteral("Android 13");
    case 34:
        return QStringLiteral("Android 14");
    case 35:
        return QStringLiteral("Android 15");
    case 36:
        return QStringLiteral("Android 16");
    default:
        return QStringLiteral("Android (API ") + QString::number(api) + QLatin1Char(')');
    }
}

QString SystemImage::label() const
{
    // Unnamed levels show the number twice, as androidName already carries it.
    const QString store = variant == QLatin1String("google_apis_playstore") ? QStringLiteral("Google Play")
                                                                            : QStringLiteral("Google APIs");
    return androidName() + QStringLiteral(" (API ") + QString::number(api) + QStringLiteral("), ") + store;
}

size_t qHash(const SystemImage &image, size_t seed)
{
    return qHashMulti(seed, image.id, image.api, image.variant, image.installed);
}
