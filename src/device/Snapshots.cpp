#include "Snapshots.h"

#include "KnownFailures.h"
#include "PhoneStore.h"

#include <QPointer>
#include <QRegularExpression>

namespace {

struct Command
{
    const char *word;
    const char *doing;
    const char *done;
    const char *failed;
};

// Saving writes the phone's whole memory to disk, and loading reads it back.
constexpr double snapshotTimeout = 300.0;

const Command commands[] = {
    {"save", "Saving snapshot %1...", "Saved snapshot %1.", "Could not save snapshot %1"},
    {"load", "Loading snapshot %1...", "Loaded snapshot %1.", "Could not load snapshot %1"},
    {"delete", "Deleting snapshot %1...", "Deleted snapshot %1.", "Could not delete snapshot %1"},
};

} // namespace

QStringList Snapshots::parseList(const QString &listing)
{
    // Rows follow the "ID  TAG  VM SIZE ..." header: an ID ("--" or a number), then the tag.
    static const QRegularExpression space(QStringLiteral("\\s+"));
    QStringList names;
    bool inTable = false;
    for (const QString &line : listing.split(QLatin1Char('\n'))) {
        const QStringList fields = line.trimmed().split(space, Qt::SkipEmptyParts);
        if (fields.size() >= 2 && fields.at(0) == QLatin1String("ID") && fields.at(1) == QLatin1String("TAG"))
            inTable = true;
        else if (inTable && fields.size() >= 2)
            names.append(fields.at(1));
        else
            inTable = false;
    }
    return names;
}

void Snapshots::refresh()
{
    refreshTask();
}

void Snapshots::save(const QString &name)
{
    commandTask(QStringLiteral("save"), name);
}

void Snapshots::load(const QString &name)
{
    commandTask(QStringLiteral("load"), name);
}

void Snapshots::remove(const QString &name)
{
    commandTask(QStringLiteral("delete"), name);
}

QCoro::Task<> Snapshots::refreshTask()
{
    QPointer<Snapshots> self(this);
    auto running = adb(
        {QStringLiteral("emu"), QStringLiteral("avd"), QStringLiteral("snapshot"), QStringLiteral("list")});
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;
    if (reportFailure(result, QStringLiteral("Could not list snapshots")))
        setNames(parseList(result.text));
}

QCoro::Task<> Snapshots::commandTask(QString command, QString name)
{
    const Command *found = nullptr;
    for (const Command &each : commands) {
        if (command == QLatin1String(each.word))
            found = &each;
    }
    if (!found)
        co_return;
    if (!PhoneStore::isValidName(name)) {
        report(
            QStringLiteral("A snapshot name uses only letters, digits, dots, dashes and underscores."), true);
        co_return;
    }
    report(QString::fromUtf8(found->doing).arg(name));
    QPointer<Snapshots> self(this);
    auto running
        = adb({QStringLiteral("emu"), QStringLiteral("avd"), QStringLiteral("snapshot"), command, name},
            snapshotTimeout);
    const ProcessResult result = co_await std::move(running);
    if (!self)
        co_return;
    if (reportFailure(result, QString::fromUtf8(found->failed).arg(name))) {
        report(QString::fromUtf8(found->done).arg(name));
    } else {
        const QVariantMap known = KnownFailures::explain(result.text);
        if (!known.isEmpty()) {
            report(message() + QStringLiteral("\n") + known.value(QStringLiteral("what")).toString()
                    + QLatin1Char(' ') + known.value(QStringLiteral("todo")).toString(),
                true);
        }
    }
    auto listing = refreshTask();
    co_await std::move(listing);
}

void Snapshots::serialSet()
{
    setNames({});
}

void Snapshots::setNames(const QStringList &names)
{
    if (names == m_names)
        return;
    m_names = names;
    Q_EMIT namesChanged();
}
