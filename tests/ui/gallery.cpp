// Renders the app's screens in their interesting states to PNG files, over the simulated toolchain, in the
// smallest main window, once in the light appearance and once in the dark one ("-dark" names):
//   tolvane-gallery <output folder> [name filter]
#include "Host.h"
#include "SimControl.h"
#include "TolvaneApp.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>
#include <QtQml/qqmlextensionplugin.h>

#include <QCoro/QCoroTask>

#include <cstdio>
#include <functional>

Q_IMPORT_QML_PLUGIN(TolvanePlugin)

namespace {

// The Mac's dark appearance, as far as the palette goes.
QPalette darkPalette()
{
    QPalette palette;
    const auto set = [&](QPalette::ColorRole role, const char *colour, const char *disabled = nullptr) {
        palette.setColor(role, QColor(QLatin1String(colour)));
        if (disabled)
            palette.setColor(QPalette::Disabled, role, QColor(QLatin1String(disabled)));
    };
    set(QPalette::Window, "#2c2c2e");
    set(QPalette::WindowText, "#e8e8ea", "#77777c");
    set(QPalette::Base, "#1e1e20");
    set(QPalette::AlternateBase, "#2c2c2e");
    set(QPalette::Text, "#e8e8ea", "#77777c");
    set(QPalette::PlaceholderText, "#8e8e93");
    set(QPalette::Button, "#3a3a3c", "#323234");
    set(QPalette::ButtonText, "#e8e8ea", "#77777c");
    set(QPalette::BrightText, "#ffffff");
    set(QPalette::Light, "#545458");
    set(QPalette::Midlight, "#48484a");
    set(QPalette::Mid, "#3a3a3c");
    set(QPalette::Dark, "#1c1c1e");
    set(QPalette::Shadow, "#000000");
    set(QPalette::Highlight, "#0a84ff");
    set(QPalette::HighlightedText, "#ffffff");
    set(QPalette::Link, "#0a84ff");
    set(QPalette::ToolTipBase, "#3a3a3c");
    set(QPalette::ToolTipText, "#e8e8ea");
    return palette;
}

void waitUntil(const std::function<bool()> &condition)
{
    QDeadlineTimer deadline(30000);
    while (!condition() && !deadline.hasExpired())
        QTest::qWait(10);
}

// Lays out one thing on the Mac before the app starts: a word of the table below, an image id, or else a
// behaviour switch of the simulated tools.
void prepare(SimHost &host, const QString &word)
{
    if (word == QLatin1String("brew"))
        host.installBrew();
    else if (word == QLatin1String("java"))
        host.installJava();
    else if (word == QLatin1String("tools"))
        host.installCommandLineTools();
    else if (word == QLatin1String("licences"))
        host.acceptLicenses();
    else if (word == QLatin1String("ready"))
        host.makeReady();
    else if (word == QLatin1String("slow"))
        host.setTimeScale(1.0);
    else if (word == QLatin1String("phones")) {
        host.makeReady();
        host.createPhone(QStringLiteral("Pixel_7_API_34"));
        host.createPhone(QStringLiteral("Pixel_8_Play"), QStringLiteral("pixel_8"),
            QStringLiteral("system-images;android-34;google_apis_playstore;arm64-v8a"));
        host.addBrokenPhone(QStringLiteral("Old_Phone"));
    } else if (word == QLatin1String("started-elsewhere"))
        host.startPhone(QStringLiteral("Pixel_8_Play"));
    else if (word == QLatin1String("old-java"))
        host.installSystemJava(
            QStringLiteral("jdk-11.jdk"), QStringLiteral("11.0.24"), QStringLiteral("aarch64"));
    else if (word == QLatin1String("signed-elsewhere"))
        host.setBehaviour(QStringLiteral("known-failure"), "update-incompatible");
    else if (word == QLatin1String("disk-full"))
        host.setBehaviour(QStringLiteral("known-failure"), "disk-full");
    else if (word == QLatin1String("started-twice")) {
        host.startPhone(QStringLiteral("Pixel_8_Play"));
        host.startPhone(QStringLiteral("Pixel_8_Play"), 5556, {QStringLiteral("-read-only")});
    } else if (word == QLatin1String("image-34-gone"))
        QDir(host.sdkRoot() + QStringLiteral("/system-images/android-34")).removeRecursively();
    else if (word == QLatin1String("odd-listing"))
        host.setBehaviour(
            QStringLiteral("avdmanager.list-avd.output"), "Something avdmanager never said before");
    else if (word == QLatin1String("create-fails"))
        host.setBehaviour(QStringLiteral("avdmanager.create.fail"),
            "Error: Package path is not valid. Valid system image paths are:\nnull");
    else if (word == QLatin1String("snapshots")) {
        for (const char *name : {"before_login", "checkout_flow"}) {
            const QString folder = host.root() + QStringLiteral("/.android/avd/Pixel_7_API_34.avd/snapshots/")
                + QLatin1String(name);
            QDir().mkpath(folder);
            QFile ram(folder + QStringLiteral("/ram.bin"));
            if (ram.open(QIODevice::WriteOnly))
                ram.write(QByteArray(3 * 1024 * 1024, 'x'));
        }
    } else if (word.startsWith(QLatin1String("system-images;")))
        host.installSystemImage(word);
    else
        host.setBehaviour(word);
}

// One shot: a fresh app and main window over the prepared Mac, and the window to grab.
struct Shot
{
    explicit Shot(bool arm64)
    {
        Host host = Host::current();
        host.arm64 = arm64;
        Host::setCurrent(host);
        engine = std::make_unique<QQmlEngine>();
        app = std::make_unique<TolvaneApp>(nullptr);
        if (!app->showMainWindow(*engine))
            qFatal("the main window did not load");
        window = main = qobject_cast<QQuickWindow *>(app->mainWindow());
    }
    ~Shot()
    {
        app.reset();
        engine.reset();
    }
    // By object name; rows a list view made are no object's children, so its items are searched too.
    QObject *find(const QString &name) const
    {
        if (auto *found = main->findChild<QObject *>(name))
            return found;
        return findItem(main->contentItem(), name);
    }
    static QQuickItem *findItem(QQuickItem *item, const QString &name)
    {
        if (item->objectName() == name)
            return item;
        for (QQuickItem *child : item->childItems()) {
            if (auto *found = findItem(child, name))
                return found;
        }
        return nullptr;
    }
    static void settle() { QTest::qWait(300); }

    // Makes the app do one thing: a word of the table below, with its argument after a colon.
    void act(const QString &step, SimControl &sim)
    {
        const QString word = step.section(QLatin1Char(':'), 0, 0);
        const QString argument = step.section(QLatin1Char(':'), 1);
        PhoneStore *store = app->store();
        SetupController *setup = app->setup();
        if (word == QLatin1String("tab")) {
            find(QStringLiteral("tabs"))->setProperty("currentIndex", argument.toInt());
            settle();
            waitUntil([&] { return !store->isLoading(); });
        } else if (word == QLatin1String("tab-now")) {
            find(QStringLiteral("tabs"))->setProperty("currentIndex", argument.toInt());
        } else if (word == QLatin1String("logs")) {
            QMetaObject::invokeMethod(main, "openLogs");
            window = main->property("logsWindow").value<QQuickWindow *>();
        } else if (word == QLatin1String("select-log")) {
            // From the middle of one line to the middle of another, three lines further on.
            QObject *box = window->findChild<QObject *>(QStringLiteral("logList"))->parent();
            const qint64 last = box->property("lines").value<LogLines *>()->droppedCount()
                + box->property("lines").value<LogLines *>()->count() - 1;
            QMetaObject::invokeMethod(box, "select", Q_ARG(QVariant, double(last - 4)), Q_ARG(QVariant, 10),
                Q_ARG(QVariant, double(last - 1)), Q_ARG(QVariant, 25));
        } else if (word == QLatin1String("logcat")) {
            Logcat *log = app->logcats()->forSerial(QStringLiteral("emulator-5554"));
            window->findChild<QObject *>(QStringLiteral("logTabs"))->setProperty("currentIndex", 1);
            waitUntil([&] { return log->held() >= 19 && !log->filtering(); });
        } else if (word == QLatin1String("next-crash")) {
            QMetaObject::invokeMethod(
                window->findChild<QObject *>(QStringLiteral("logcatBody")), "nextCrash");
        } else if (word == QLatin1String("logcat-filter")) {
            Logcat *log = app->logcats()->forSerial(QStringLiteral("emulator-5554"));
            log->setApp(QStringLiteral("com.example.notes"));
            log->setMinimumLevel(LogcatEntry::Debug);
            waitUntil([&] { return log->count() == 7 && !log->filtering(); });
        } else if (word == QLatin1String("licence-text")) {
            setup->loadLicenseText();
            waitUntil([&] { return setup->licenseText().has_value(); });
        } else if (word == QLatin1String("install-java")) {
            setup->installJava();
            waitUntil([&] { return setup->job()->lines().size() > 4; });
        } else if (word == QLatin1String("java-done")) {
            setup->installJava();
            waitUntil([&] { return !setup->job()->isRunning(); });
        } else if (word == QLatin1String("cancel-job")) {
            setup->job()->job()->cancel();
            waitUntil([&] { return !setup->job()->isRunning(); });
        } else if (word == QLatin1String("emulator-fails")) {
            setup->installEmulator();
            waitUntil([&] { return !setup->job()->isRunning() && setup->message().has_value(); });
        } else if (word == QLatin1String("list-fails")) {
            sim.host().setBehaviour(QStringLiteral("adb.pm.fail"), "1");
            QCoro::waitFor(app->installer()->refreshPackagesTask(QStringLiteral("emulator-5554")));
        } else if (word == QLatin1String("java-fails")) {
            setup->installJava();
            waitUntil([&] { return !setup->job()->isRunning() && setup->message().has_value(); });
        } else if (word == QLatin1String("start") || word == QLatin1String("crash")
            || word == QLatin1String("boot")) {
            store->start(argument, StartOptions());
            EmulatorProcess *runner = store->runner(argument);
            const auto state = word == QLatin1String("start") ? EmulatorProcess::State::Running
                : word == QLatin1String("crash")              ? EmulatorProcess::State::Stopped
                                                              : EmulatorProcess::State::Booting;
            waitUntil([&] { return runner->state() == state; });
            if (word == QLatin1String("crash"))
                waitUntil([&] { return runner->failure().has_value(); });
        } else if (word == QLatin1String("slow-boot")) {
            EmulatorProcess::Timing timing;
            timing.slowBootAfter = std::chrono::seconds(4);
            EmulatorProcess::setTiming(timing);
        } else if (word == QLatin1String("until-slow-boot")) {
            waitUntil([&] { return store->runner(QStringLiteral("Pixel_7_API_34"))->slowBoot(); });
            EmulatorProcess::setTiming({});
        } else if (word.startsWith(QLatin1String("confirm")) || word == QLatin1String("deletePhone")) {
            QMetaObject::invokeMethod(
                find(QStringLiteral("phonesView")), qPrintable(word), Q_ARG(QVariant, argument));
        } else if (word == QLatin1String("delete-unknown")) {
            auto deleting = store->deletePhoneTask(QStringLiteral("Nobody"));
            QCoro::waitFor(std::move(deleting));
        } else if (word == QLatin1String("new-phone")) {
            find(QStringLiteral("phonesView"))->setProperty("showNew", true);
            waitUntil([&] {
                if (argument == QLatin1String("failed"))
                    return store->property("catalogFailure").isValid();
                return argument == QLatin1String("loading")
                    ? store->imagesLoading()
                    : !store->imagesLoading() && !store->devicesLoading() && !store->images().isEmpty();
            });
            settle();
        } else if (word == QLatin1String("install-image")) {
            QMetaObject::invokeMethod(find(QStringLiteral("Install it")), "clicked");
            waitUntil([&] { return store->imageJob()->progress().value_or(0) > 0.3; });
        } else if (word == QLatin1String("image-done")) {
            // Once the images have been read again after the install.
            waitUntil([&] { return !store->imageJob()->isRunning() && !store->installingImage(); });
        } else if (word == QLatin1String("fix-image")) {
            // List rows are items, not children of the window's objects: the offered fix is looked up on
            // screen.
            const std::function<QQuickItem *(QQuickItem *)> offered = [&](QQuickItem *item) -> QQuickItem * {
                if (item->objectName() == QLatin1String("hintFix") && item->isVisible())
                    return item;
                for (QQuickItem *child : item->childItems()) {
                    if (QQuickItem *found = offered(child))
                        return found;
                }
                return nullptr;
            };
            if (QQuickItem *fix = offered(main->contentItem()))
                QMetaObject::invokeMethod(fix, "clicked");
            waitUntil([&] { return store->fixOutcomes().contains(argument); });
        } else if (word == QLatin1String("create")) {
            QMetaObject::invokeMethod(
                find(QStringLiteral("phonesView"))->property("sheet").value<QObject *>(), "create");
            waitUntil([&] { return find(QStringLiteral("createError")) != nullptr; });
            find(QStringLiteral("createError"))->setProperty("open", true);
        } else if (word == QLatin1String("install")) {
            // .apk files are apps, with native code for the ABIs after a second colon; anything else is text.
            QList<QUrl> files;
            for (const QString &name : argument.section(QLatin1Char(':'), 0, 0).split(QLatin1Char(',')))
                files << (name.endsWith(QLatin1String(".apk"))
                        ? QUrl(sim.writeApk(name,
                            argument.section(QLatin1Char(':'), 1)
                                .split(QLatin1Char(','), Qt::SkipEmptyParts)))
                        : QUrl::fromLocalFile(sim.writeFile(name, QStringLiteral("PK"))));
            auto installing = app->installer()->installTask(files, QStringLiteral("emulator-5554"));
            QCoro::waitFor(std::move(installing));
        } else if (word == QLatin1String("reinstall")) {
            // As confirmed in the hint's dialog: the app it names, from the file it names.
            const QVariantMap explained = find(QStringLiteral("outputHint"))->property("explained").toMap();
            app->installer()->reinstall(explained.value(QStringLiteral("package")).toString(),
                explained.value(QStringLiteral("path")).toString(), QStringLiteral("emulator-5554"));
            waitUntil([&] { return !app->installer()->busy(); });
            settle();
        } else if (word == QLatin1String("about")) {
            // The app menu's About Tolvane, where the platform draws a menu bar.
            QMetaObject::invokeMethod(main, "showAbout");
            settle();
        } else if (word == QLatin1String("end")) {
            // A scrolling tab, by its name, scrolled to its end.
            settle(); // the hint's height is laid out first
            auto *flick = find(argument)->property("contentItem").value<QObject *>();
            flick->setProperty(
                "contentY", flick->property("contentHeight").toReal() - flick->property("height").toReal());
        } else if (word == QLatin1String("focus")) {
            // As the Tab key brings it: a tab by its number, else a control by its name.
            bool isTab = false;
            const int tab = argument.toInt(&isTab);
            QQuickItem *item = nullptr;
            if (isTab)
                QMetaObject::invokeMethod(find(QStringLiteral("tabs")), "itemAt",
                    Q_RETURN_ARG(QQuickItem *, item), Q_ARG(int, tab));
            else
                item = qobject_cast<QQuickItem *>(find(argument));
            item->forceActiveFocus(Qt::TabFocusReason);
        } else if (word == QLatin1String("pick")) {
            find(QStringLiteral("appsView"))->setProperty("selectedName", argument);
        } else if (word == QLatin1String("remove-lock")) {
            // With adb at odds with another program's, nothing can say the phone is not running.
            sim.host().setBehaviour(QStringLiteral("known-failure"), "adb-version");
            QCoro::waitFor(store->removeLockAndStartTask(argument, StartOptions {}));
            settle();
        } else if (word == QLatin1String("snapshots")) {
            const QString name = QStringLiteral("snapshots ") + argument;
            waitUntil([&] { return find(name) != nullptr; });
            if (!find(name))
                qFatal("the Phones tab shows no %s", qPrintable(argument));
            find(name)->setProperty("checked", true);
            settle();
            settle();
        } else if (word == QLatin1String("record")) {
            QMetaObject::invokeMethod(find(QStringLiteral("Record")), "clicked");
            QTest::qWait(2200);
        } else if (word == QLatin1String("controls")) {
            QObject *controls = find(QStringLiteral("phonePanel"))->property("controls").value<QObject *>();
            QMetaObject::invokeMethod(controls, "setLocation", Q_ARG(double, 35.6595),
                Q_ARG(double, 139.7005), Q_ARG(QString, QStringLiteral("Shibuya Crossing, Tokyo")));
            waitUntil([&] { return !controls->property("busy").toBool(); });
            QMetaObject::invokeMethod(controls, "setBatteryLevel", Q_ARG(int, 15));
            waitUntil([&] { return !controls->property("busy").toBool(); });
            QMetaObject::invokeMethod(controls, "setNetworkSpeed", Q_ARG(QString, QStringLiteral("edge")));
            waitUntil([&] { return !controls->property("busy").toBool(); });
            QMetaObject::invokeMethod(controls, "rotate", Q_ARG(bool, true));
            waitUntil([&] { return !controls->property("busy").toBool(); });
        } else if (word == QLatin1String("time-scale")) {
            sim.host().setTimeScale(argument.toDouble());
        } else if (word == QLatin1String("push")) {
            QObject *transfer = find(QStringLiteral("phonePanel"))->property("transfer").value<QObject *>();
            const QList<QUrl> files = {QUrl::fromLocalFile(sim.writeFile(argument, QStringLiteral("data")))};
            QMetaObject::invokeMethod(transfer, "push", Q_ARG(QList<QUrl>, files));
            waitUntil([&] { return transfer->property("percent").toInt() >= 50; });
        } else if (word == QLatin1String("locked")) {
            waitUntil([&] { return !store->lockedPhones().isEmpty(); });
        } else if (word == QLatin1String("elsewhere")) {
            waitUntil([&] { return !store->elsewhere()->phones().isEmpty(); });
        } else {
            qFatal("no such step: %s", qPrintable(step));
        }
    }

    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<TolvaneApp> app;
    QQuickWindow *main = nullptr;
    QQuickWindow *window = nullptr;
};

// Each shot: its name, what the Mac holds ("intel" for a Mac without Apple silicon), and what the app does,
// step after step.
const char *const shots[][3] = {
    {"01-intel-notice", "intel", ""},
    {"02-setup-homebrew-missing", "", ""},
    {"03-setup-licence-card", "brew java tools", ""},
    {"04-setup-licence-text", "brew java tools", "licence-text"},
    {"05-setup-job-running", "brew slow", "install-java"},
    {"06-setup-job-failed", "brew brew.fail", "java-fails"},
    {"07-setup-emulator-card", "brew java tools licences", ""},
    {"08-setup-ready", "ready", ""},
    {"09-logs-no-phones", "", "logs"},
    {"10-logs-failed-phone", "phones emulator.crash", "crash:Pixel_7_API_34|logs"},
    {"10b-logs-selection", "phones emulator.crash", "crash:Pixel_7_API_34|logs|select-log"},
    {"11-phones-not-ready", "", "tab:1"},
    {"11b-phones-first-visit-loading", "phones slow", "tab-now:1"},
    {"12-phones-list", "phones", "tab:1|start:Pixel_8_Play"},
    {"13-phones-failed-start", "phones emulator.crash", "tab:1|crash:Pixel_7_API_34"},
    {"14-phones-raw-listing-and-error", "ready odd-listing", "tab:1|delete-unknown"},
    {"15-phones-delete-confirmation", "phones", "tab:1|confirmDelete:Pixel_7_API_34"},
    {"15b-phones-wipe-confirmation", "phones", "tab:1|confirmWipe:Pixel_8_Play"},
    {"15c-phones-deleting", "phones slow", "tab:1|deletePhone:Pixel_7_API_34"},
    {"16-new-phone-sheet", "ready", "tab:1|new-phone"},
    {"16b-new-phone-loading", "ready slow", "tab:1|new-phone:loading"},
    {"17-new-phone-installing-image", "ready slow", "tab:1|new-phone|install-image"},
    {"18-new-phone-image-installed", "ready system-images;android-35;google_apis;arm64-v8a",
        "tab:1|new-phone"},
    {"18b-new-phone-failed-with-details", "ready system-images;android-35;google_apis;arm64-v8a create-fails",
        "tab:1|new-phone|create"},
    {"19-apps-no-phone", "", "tab:2"},
    {"20-apps-running-phone", "phones",
        "start:Pixel_7_API_34|tab:2|install:com.example.notes.apk,org.example.maps.apk,readme.txt"},
    {"21-apps-abi-refused", "phones", "start:Pixel_7_API_34|tab:2|install:Racing Game.apk:x86_64"},
    {"22-phones-system-image-missing", "phones image-34-gone", "tab:1|crash:Pixel_7_API_34"},
    {"23-phones-stale-lock", "phones emulator.die", "tab:1|crash:Pixel_7_API_34|locked"},
    {"24-phones-booting-slowly", "phones emulator.never-boot",
        "slow-boot|tab:1|boot:Pixel_7_API_34|until-slow-boot"},
    {"23b-phones-lock-stays", "phones emulator.die",
        "tab:1|crash:Pixel_7_API_34|locked|remove-lock:Pixel_7_API_34"},
    {"25-phones-disk-use-and-started-elsewhere", "phones started-elsewhere", "tab:1|elsewhere"},
    {"25b-phones-one-phone-in-two-emulators", "phones started-twice", "tab:1|elsewhere"},
    {"26-new-phone-image-sizes", "phones system-images;android-33;google_apis;arm64-v8a", "tab:1|new-phone"},
    {"27-setup-old-java", "brew old-java tools", ""},
    {"28-apps-fix-on-another-phone", "phones signed-elsewhere",
        "start:Pixel_7_API_34|tab:2|install:com.example.notes.apk|install:com.example.notes.apk|"
        "start:Pixel_8_Play|pick:Pixel_8_Play|end:appsView"},
    {"29-logcat-levels-and-crash", "phones", "start:Pixel_7_API_34|logs|logcat|next-crash"},
    {"30-logcat-app-filter", "phones", "start:Pixel_7_API_34|logs|logcat|logcat-filter"},
    {"31-phones-snapshots-running", "phones snapshots",
        "start:Pixel_7_API_34|tab:1|snapshots:Pixel_7_API_34"},
    {"32-phones-snapshots-stopped", "phones snapshots", "tab:1|snapshots:Pixel_7_API_34"},
    {"33-apps-recording", "phones", "start:Pixel_7_API_34|tab:2|record"},
    {"34-apps-phone-controls", "phones", "start:Pixel_7_API_34|tab:2|controls"},
    {"35-apps-pushing-a-file", "phones", "start:Pixel_7_API_34|tab:2|time-scale:1|push:Holiday Photos.zip"},
    {"36-setup-job-finished", "brew", "java-done"},
    {"37-setup-job-cancelled", "brew brew.hang", "install-java|cancel-job"},
    {"38-new-phone-image-installed-now", "ready", "tab:1|new-phone|install-image|image-done"},
    {"39-phones-image-installed-from-hint", "phones image-34-gone",
        "tab:1|crash:Pixel_7_API_34|fix-image:Pixel_7_API_34"},
    {"40-apps-hint-in-view", "phones signed-elsewhere",
        "start:Pixel_7_API_34|tab:2|install:com.example.notes.apk|install:com.example.notes.apk"},
    {"41-new-phone-listing-failed", "ready sdkmanager.list.fail", "tab:1|new-phone:failed"},
    {"42-focus-ring-tab", "ready", "tab:1|focus:2"},
    {"43-focus-ring-switch", "ready", "tab:1|focus:coldBoot"},
    {"44-apps-reinstalled", "phones signed-elsewhere",
        "start:Pixel_7_API_34|tab:2|install:com.example.notes.apk|install:com.example.notes.apk|reinstall"},
    {"45-about-box", "ready", "about"},
    {"46-setup-disk-full", "brew java tools licences disk-full", "emulator-fails|end:setupView"},
    {"47-apps-listing-failed", "phones",
        "start:Pixel_7_API_34|tab:2|install:com.example.notes.apk,org.example.maps.apk|list-fails"},
    {"48-apps-no-output-yet", "phones", "start:Pixel_7_API_34|tab:2|end:appsView"},
};

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: tolvane-gallery <output folder> [name filter]\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const QString filter = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString();
    QDir().mkpath(folder);
    SimControl sim;

    // Each shot in a fresh Mac and a fresh app, once in each appearance.
    const QPalette light = QGuiApplication::palette();
    int saved = 0;
    for (const auto &[shotName, machine, steps] : shots) {
        for (const bool dark : {false, true}) {
            const QString name = QLatin1String(shotName) + QLatin1String(dark ? "-dark" : "");
            if (!filter.isEmpty() && !name.contains(filter))
                continue;
            QGuiApplication::setPalette(dark ? darkPalette() : light);
            sim.reset();
            const QStringList words
                = QString::fromLatin1(machine).split(QLatin1Char(' '), Qt::SkipEmptyParts);
            for (const QString &word : words) {
                if (word != QLatin1String("intel"))
                    prepare(sim.host(), word);
            }
            Shot shot(!words.contains(QLatin1String("intel")));
            for (const QString &step : QString::fromLatin1(steps).split(QLatin1Char('|'), Qt::SkipEmptyParts))
                shot.act(step, sim);
            Shot::settle();
            const QImage picture = shot.window->grabWindow();
            const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
            if (picture.isNull() || !picture.save(path))
                qFatal("could not save %s", qPrintable(path));
            std::printf("%s\n", qPrintable(path));
            ++saved;
        }
    }
    QGuiApplication::setPalette(light);
    std::printf("%d screens\n", saved);
    return 0;
}
