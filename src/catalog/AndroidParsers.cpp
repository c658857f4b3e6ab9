#include "AndroidParsers.h"

#include <QMap>
#include <QStringView>

#include <algorithm>
#include <optional>

namespace {

bool isLineBreak(QChar c)
{
    switch (c.unicode()) {
    case u'\n':
    case u'\r':
    case u'\v':
    case u'\f':
    case 0x0085:
    case 0x2028:
    case 0x2029:
        return true;
    default:
        return false;
    }
}

// Only tabs and space separators: QString::trimmed() would also take line breaks.
bool isPadding(QChar c)
{
    return c == u'\t' || c.category() == QChar::Separator_Space;
}

QStringView trimmed(QStringView s)
{
    while (!s.isEmpty() && isPadding(s.front()))
        s = s.sliced(1);
    while (!s.isEmpty() && isPadding(s.back()))
        s.chop(1);
    return s;
}

// Every break character ends a line by itself, so CR LF leaves an empty line in between.
QList<QStringView> trimmedLines(const QString &text)
{
    QList<QStringView> lines;
    const QStringView all(text);
    qsizetype start = 0;
    for (qsizetype i = 0; i < all.size(); ++i) {
        if (isLineBreak(all.at(i))) {
            lines.append(trimmed(all.sliced(start, i - start)));
            start = i + 1;
        }
    }
    lines.append(trimmed(all.sliced(start)));
    return lines;
}

QString textAfter(QStringView line, QStringView prefix)
{
    return trimmed(line.sliced(prefix.size())).toString();
}

// The digits right after "android-": android-34-ext8 is API 34. The run takes every numeric character
// so that one in another script spoils the number instead of cutting it short.
std::optional<qint64> apiLevel(QStringView platform)
{
    constexpr QStringView prefix = u"android-";
    if (!platform.startsWith(prefix))
        return std::nullopt;
    const QStringView rest = platform.sliced(prefix.size());
    qsizetype end = 0;
    while (end < rest.size()) {
        char32_t c = rest.at(end).unicode();
        qsizetype width = 1;
        if (rest.at(end).isHighSurrogate() && end + 1 < rest.size() && rest.at(end + 1).isLowSurrogate()) {
            c = QChar::surrogateToUcs4(rest.at(end), rest.at(end + 1));
            width = 2;
        }
        if (!QChar::isNumber(c))
            break;
        end += width;
    }
    const QStringView digits = rest.first(end);
    if (digits.isEmpty()
        || !std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return std::nullopt;
    bool ok = false;
    const qint64 level = digits.toLongLong(&ok);
    if (!ok)
        return std::nullopt;
    return level;
}

// A package row's path when it names an image we can run: arm64, Google APIs or Google Play.
std::optional<SystemImage> imageRow(QStringView line)
{
    const qsizetype bar = line.indexOf(u'|');
    if (bar < 0)
        return std::nullopt;
    const QStringView path = trimmed(line.first(bar));
    if (!path.startsWith(u"system-images;"))
        return std::nullopt;
    const QList<QStringView> parts = path.split(u';');
    if (parts.size() != 4 || parts[3] != u"arm64-v8a")
        return std::nullopt;
    if (parts[2] != u"google_apis" && parts[2] != u"google_apis_playstore")
        return std::nullopt;
    const std::optional<qint64> api = apiLevel(parts[1]);
    if (!api)
        return std::nullopt;
    return SystemImage {path.toString(), *api, parts[2].toString(), false};
}

}

namespace AndroidParsers {

QList<DeviceDef> parseDevices(const QString &text)
{
    QList<DeviceDef> devices;
    std::optional<QString> id;
    QString name;
    QString oem;
    const auto finish = [&] {
        if (id)
            devices.append(DeviceDef {*id, name.isEmpty() ? *id : name, oem});
        id.reset();
        name.clear();
        oem.clear();
    };

    for (const QStringView line : trimmedLines(text)) {
        if (line.startsWith(u"id:")) {
            finish();
            // avdmanager prints an index before the quoted identifier; only the identifier is stable.
            const qsizetype open = line.indexOf(u'"');
            if (open < 0)
                continue;
            const qsizetype close = line.indexOf(u'"', open + 1);
            if (close < 0)
                continue;
            id = line.sliced(open + 1, close - open - 1).toString();
        } else if (line.startsWith(u"Name:")) {
            name = textAfter(line, u"Name:");
        } else if (line.startsWith(u"OEM")) {
            // avdmanager writes "OEM : Google", with a space before the colon.
            const qsizetype colon = line.indexOf(u':');
            if (colon >= 0)
                oem = trimmed(line.sliced(colon + 1)).toString();
        }
    }
    finish();
    return devices;
}

QList<AVDInfo> parseAVDs(const QString &text)
{
    QList<AVDInfo> phones;
    std::optional<QString> name;
    AVDInfo pending;
    const auto close = [&] {
        if (name) {
            pending.name = *name;
            phones.append(pending);
        }
        name.reset();
        pending = AVDInfo {};
    };

    for (const QStringView line : trimmedLines(text)) {
        if (line.startsWith(u"---")) {
            close();
        } else if (line.startsWith(u"Name:")) {
            close();
            name = textAfter(line, u"Name:");
        } else if (line.startsWith(u"Path:")) {
            pending.path = textAfter(line, u"Path:");
        } else if (line.startsWith(u"Device:")) {
            // "pixel_7 (Google)": the id, then the maker.
            pending.device = textAfter(line, u"Device:").section(QLatin1Char(' '), 0, 0);
        } else if (line.startsWith(u"Based on:")) {
            pending.basedOn = textAfter(line, u"Based on:");
        } else if (line.startsWith(u"Error:")) {
            pending.error = textAfter(line, u"Error:");
        }
    }
    close();
    return phones;
}

QList<SystemImage> parseImages(const QString &text)
{
    enum class Section { None, Installed, Available, Updates };
    Section section = Section::None;
    // Keyed by id, so images that tie on API level and variant come out in id order.
    QMap<QString, SystemImage> table;

    for (const QStringView line : trimmedLines(text)) {
        // sdkmanager spells these headings with a lower-case p and a capital P.
        if (line.startsWith(u"Installed packages")) {
            section = Section::Installed;
            continue;
        }
        if (line.startsWith(u"Available Packages")) {
            section = Section::Available;
            continue;
        }
        if (line.startsWith(u"Available Updates")) {
            section = Section::Updates;
            continue;
        }
        if (section != Section::Installed && section != Section::Available)
            continue;
        std::optional<SystemImage> image = imageRow(line);
        if (!image)
            continue;
        const auto known = table.find(image->id);
        if (known != table.end()) {
            if (section == Section::Installed)
                known->installed = true;
            continue;
        }
        image->installed = section == Section::Installed;
        table.insert(image->id, *image);
    }

    QList<SystemImage> images = table.values();
    // Other levels are offered only when the listing has nothing for API 34 or 35.
    const auto isCurrent = [](const SystemImage &image) { return image.api == 34 || image.api == 35; };
    if (std::any_of(images.cbegin(), images.cend(), isCurrent))
        images.removeIf([&](const SystemImage &image) { return !isCurrent(image); });
    std::stable_sort(images.begin(), images.end(), [](const SystemImage &a, const SystemImage &b) {
        if (a.api != b.api)
            return a.api > b.api;
        return a.variant < b.variant;
    });
    return images;
}

}
