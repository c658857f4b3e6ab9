#include "AVDInfo.h"

#include <QHashFunctions>
#include <QRegularExpression>

size_t qHash(const AVDInfo &phone, size_t seed)
{
    return qHashMulti(seed, phone.name, phone.path, phone.basedOn, phone.error, phone.device);
}

QString AVDInfo::summary() const
{
    // avdmanager says: Android 14.0 ("UpsideDownCake") Tag/ABI: google_apis_playstore/arm64-v8a
    static const QRegularExpression wording(
        QStringLiteral(R"(^(Android [^\s(]+)(?: \([^)]*\))? Tag/ABI: ([^/\s]+)/\S+$)"));
    const QRegularExpressionMatch match = wording.match(basedOn);
    if (!match.hasMatch())
        return basedOn;
    QStringList words;
    if (!device.isEmpty()) {
        QStringList model = device.split(QLatin1Char('_'), Qt::SkipEmptyParts);
        for (QString &word : model)
            word[0] = word[0].toUpper();
        words.append(model.join(QLatin1Char(' ')));
    }
    words.append(match.captured(1));
    const QString tag = match.captured(2);
    words.append(tag == QLatin1String("google_apis_playstore") ? QStringLiteral("Google Play")
            : tag == QLatin1String("google_apis")              ? QStringLiteral("Google APIs")
                                                               : tag);
    return words.join(QStringLiteral(", "));
}
