// Renders the app's screens in their interesting states to PNG files, over the simulated toolchain, in the
// smallest main window, once in the light appearance and once in the dark one ("-dark" names):
//   tolvane-gallery <output folder> [name filter]
#include "Host.h"
#include "SimControl.h"
#include "TolvaneApp.h"

#include <QDeadlineTimer>
#include <QDir>
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

bool waitUntil(const std::function<bool()> &condition, int ms = 20000)
{
    QDeadlineTimer deadline(ms);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QTest::qWait(10);
    }
    return true;
}

// One shot: a fresh simulated Mac, a fresh app and main window, a way to drive it, and the window to grab.
class Shot
{
public:
    explicit Shot(bool arm64 = true)
    {
        if (!arm64) {
            Host host = Host::current();
            host.arm64 = false;
            Host::setCurrent(host);
        }
        engine = std::make_unique<QQmlEngine>();
        app = std::make_unique<TolvaneApp>(nullptr);
        if (!app->showMainWindow(*engine))
            qFatal("the main window did not load");
        main = qobject_cast<QQuickWindow *>(app->mainWindow());
    }
    ~Shot()
    {
        app.reset();
        engine.reset();
    }

    void selectTab(int index)
    {
        main->findChild<QObject *>(QStringLiteral("tabs"))->setProperty("currentIndex", index);
        settle();
    }
    QQuickWindow *openLogs()
    {
        QMetaObject::invokeMethod(main, "openLogs");
        settle();
        return main->property("logsWindow").value<QQuickWindow *>();
    }
    static void settle(int ms = 300) { QTest::qWait(ms); }

    std::unique_ptr<QQmlEngine> engine;
    std::unique_ptr<TolvaneApp> app;
    QQuickWindow *main = nullptr;
};

struct Gallery
{
    Gallery(const QString &folder, const QString &filter)
        : folder(folder)
        , filter(filter)
    { }

    QString folder;
    QString filter;
    SimControl sim;
    int saved = 0;

    bool wanted(const QString &name) const { return filter.isEmpty() || name.contains(filter); }

    void save(QQuickWindow *window, const QString &name)
    {
        Shot::settle();
        const QImage image = window->grabWindow();
        const QString path = QDir(folder).filePath(name + QStringLiteral(".png"));
        if (image.isNull() || !image.save(path))
            qFatal("could not save %s", qPrintable(path));
        std::printf("%s\n", qPrintable(path));
        ++saved;
    }

    // Lays out a fresh Mac, lets `prepare` shape it, builds the app, lets `drive` act, then saves; once
    // in each appearance.
    void shoot(const QString &name, const std::function<void(SimHost &)> &prepare,
        const std::function<QQuickWindow *(Shot &)> &drive, bool arm64 = true)
    {
        const QPalette light = QGuiApplication::palette();
        for (const bool dark : {false, true}) {
            const QString shotName = dark ? name + QStringLiteral("-dark") : name;
            if (!wanted(shotName))
                continue;
            QGuiApplication::setPalette(dark ? darkPalette() : light);
            sim.reset();
            prepare(sim.host());
            Shot shot(arm64);
            QQuickWindow *window = drive(shot);
            save(window ? window : shot.main, shotName);
        }
        QGuiApplication::setPalette(light);
    }
};

} // namespace

int main(int argc, char *argv[])
{
    QGuiApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: tolvane-gallery <output folder> [name filter]\n");
        return 2;
    }
    Gallery gallery(QString::fromLocal8Bit(argv[1]), argc > 2 ? QString::fromLocal8Bit(argv[2]) : QString());
    QDir().mkpath(gallery.folder);
    const auto nothing = [](SimHost &) {};
    const auto brewJavaTools = [](SimHost &host) {
        host.installBrew();
        host.installJava();
        host.installCommandLineTools();
    };
    const auto stay = [](Shot &) -> QQuickWindow * { return nullptr; };

    gallery.shoot(QStringLiteral("01-intel-notice"), nothing, stay, false);
    gallery.shoot(QStringLiteral("02-setup-homebrew-missing"), nothing, stay);
    gallery.shoot(QStringLiteral("03-setup-licence-card"), brewJavaTools, stay);
    gallery.shoot(QStringLiteral("04-setup-licence-text"), brewJavaTools, [](Shot &shot) -> QQuickWindow * {
        shot.app->setup()->loadLicenseText();
        waitUntil([&] { return shot.app->setup()->licenseText().has_value(); });
        return nullptr;
    });
    gallery.shoot(
        QStringLiteral("05-setup-job-running"),
        [](SimHost &host) {
            host.installBrew();
            host.setTimeScale(1.0);
        },
        [](Shot &shot) -> QQuickWindow * {
            shot.app->setup()->installJava();
            waitUntil([&] { return shot.app->setup()->job()->lines().size() > 4; });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("06-setup-job-failed"),
        [](SimHost &host) {
            host.installBrew();
            host.setBehaviour(QStringLiteral("brew.fail"));
        },
        [](Shot &shot) -> QQuickWindow * {
            shot.app->setup()->installJava();
            waitUntil([&] {
                return !shot.app->setup()->job()->isRunning() && shot.app->setup()->message().has_value();
            });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("07-setup-emulator-card"),
        [&](SimHost &host) {
            brewJavaTools(host);
            host.acceptLicenses();
        },
        stay);
    gallery.shoot(
        QStringLiteral("08-setup-ready"), [](SimHost &host) { host.makeReady(); }, stay);
    gallery.shoot(QStringLiteral("09-logs-no-phones"), nothing, [](Shot &shot) { return shot.openLogs(); });
    gallery.shoot(
        QStringLiteral("10-logs-failed-phone"),
        [](SimHost &host) {
            host.makeReady();
            host.createPhone(QStringLiteral("Pixel_7_API_34"));
            host.setBehaviour(QStringLiteral("emulator.crash"));
        },
        [](Shot &shot) {
            PhoneStore *store = shot.app->store();
            store->start(QStringLiteral("Pixel_7_API_34"), StartOptions());
            EmulatorProcess *runner = store->runner(QStringLiteral("Pixel_7_API_34"));
            waitUntil([&] { return runner->failure().has_value(); });
            return shot.openLogs();
        });

    const auto readyWithPhones = [](SimHost &host) {
        host.makeReady();
        host.createPhone(QStringLiteral("Pixel_7_API_34"));
        host.createPhone(QStringLiteral("Pixel_8_Play"), QStringLiteral("pixel_8"),
            QStringLiteral("system-images;android-35;google_apis_playstore;arm64-v8a"));
        host.addBrokenPhone(QStringLiteral("Old_Phone"));
    };
    const auto phonesTab = [](Shot &shot) -> QQuickWindow * {
        shot.selectTab(1);
        waitUntil([&] { return !shot.app->store()->isLoading(); });
        return nullptr;
    };
    const auto startAndWait = [](Shot &shot, const QString &name, EmulatorProcess::State state) {
        shot.app->store()->start(name, StartOptions());
        EmulatorProcess *runner = shot.app->store()->runner(name);
        waitUntil([&] { return runner->state() == state; }, 30000);
        return runner;
    };
    gallery.shoot(QStringLiteral("11-phones-not-ready"), nothing, phonesTab);
    gallery.shoot(
        QStringLiteral("11b-phones-first-visit-loading"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.setTimeScale(1.0);
        },
        [](Shot &shot) -> QQuickWindow * {
            shot.selectTab(1);
            return nullptr;
        });
    gallery.shoot(QStringLiteral("12-phones-list"), readyWithPhones, [&](Shot &shot) -> QQuickWindow * {
        phonesTab(shot);
        startAndWait(shot, QStringLiteral("Pixel_8_Play"), EmulatorProcess::State::Running);
        return nullptr;
    });
    gallery.shoot(
        QStringLiteral("13-phones-failed-start"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.setBehaviour(QStringLiteral("emulator.crash"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            EmulatorProcess *runner
                = startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Stopped);
            waitUntil([&] { return runner->failure().has_value(); });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("14-phones-raw-listing-and-error"),
        [](SimHost &host) {
            host.makeReady();
            host.setBehaviour(QStringLiteral("avdmanager.list-avd.output"),
                QByteArrayLiteral("Something avdmanager never said before"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            auto deleting = shot.app->store()->deletePhoneTask(QStringLiteral("Nobody"));
            QCoro::waitFor(std::move(deleting));
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("15-phones-delete-confirmation"), readyWithPhones, [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            QMetaObject::invokeMethod(shot.main->findChild<QObject *>(QStringLiteral("phonesView")),
                "confirmDelete", Q_ARG(QVariant, QStringLiteral("Pixel_7_API_34")));
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("15b-phones-wipe-confirmation"), readyWithPhones, [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            QMetaObject::invokeMethod(shot.main->findChild<QObject *>(QStringLiteral("phonesView")),
                "confirmWipe", Q_ARG(QVariant, QStringLiteral("Pixel_8_Play")));
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("15c-phones-deleting"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.setTimeScale(1.0);
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            QMetaObject::invokeMethod(shot.main->findChild<QObject *>(QStringLiteral("phonesView")),
                "deletePhone", Q_ARG(QVariant, QStringLiteral("Pixel_7_API_34")));
            return nullptr;
        });
    const auto openSheet = [&](Shot &shot) {
        phonesTab(shot);
        shot.main->findChild<QObject *>(QStringLiteral("phonesView"))->setProperty("showNew", true);
        PhoneStore *store = shot.app->store();
        waitUntil([&] {
            return !store->imagesLoading() && !store->devicesLoading() && !store->images().isEmpty();
        });
        Shot::settle();
    };
    gallery.shoot(
        QStringLiteral("16-new-phone-sheet"), [](SimHost &host) { host.makeReady(); },
        [&](Shot &shot) -> QQuickWindow * {
            openSheet(shot);
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("16b-new-phone-loading"),
        [](SimHost &host) {
            host.makeReady();
            host.setTimeScale(1.0);
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            shot.main->findChild<QObject *>(QStringLiteral("phonesView"))->setProperty("showNew", true);
            waitUntil([&] { return shot.app->store()->imagesLoading(); });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("17-new-phone-installing-image"),
        [](SimHost &host) {
            host.makeReady();
            host.setTimeScale(1.0);
        },
        [&](Shot &shot) -> QQuickWindow * {
            openSheet(shot);
            QMetaObject::invokeMethod(
                shot.main->findChild<QObject *>(QStringLiteral("Install it")), "clicked");
            waitUntil([&] { return shot.app->store()->imageJob()->progress().value_or(0) > 0.3; });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("18-new-phone-image-installed"),
        [](SimHost &host) {
            host.makeReady();
            host.installSystemImage(QStringLiteral("system-images;android-35;google_apis;arm64-v8a"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            openSheet(shot);
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("18b-new-phone-failed-with-details"),
        [](SimHost &host) {
            host.makeReady();
            host.installSystemImage(QStringLiteral("system-images;android-35;google_apis;arm64-v8a"));
            host.setBehaviour(QStringLiteral("avdmanager.create.fail"),
                QByteArrayLiteral("Error: Package path is not valid. Valid system image paths are:\nnull"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            openSheet(shot);
            QObject *sheet = shot.main->findChild<QObject *>(QStringLiteral("phonesView"))
                                 ->property("sheet")
                                 .value<QObject *>();
            QMetaObject::invokeMethod(sheet, "create");
            waitUntil([&] { return shot.main->findChild<QObject *>(QStringLiteral("createError")); });
            shot.main->findChild<QObject *>(QStringLiteral("createError"))->setProperty("open", true);
            return nullptr;
        });
    gallery.shoot(QStringLiteral("19-apps-no-phone"), nothing, [](Shot &shot) -> QQuickWindow * {
        shot.selectTab(2);
        return nullptr;
    });
    gallery.shoot(
        QStringLiteral("20-apps-running-phone"), readyWithPhones, [&](Shot &shot) -> QQuickWindow * {
            startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Running);
            ApkInstaller *installer = shot.app->installer();
            const QString serial = QStringLiteral("emulator-5554");
            QList<QUrl> apps;
            for (const char *name : {"com.example.notes.apk", "org.example.maps.apk"})
                apps << QUrl(gallery.sim.writeApk(QString::fromLatin1(name)));
            apps << QUrl::fromLocalFile(
                gallery.sim.writeFile(QStringLiteral("readme.txt"), QStringLiteral("PK")));
            shot.selectTab(2);
            auto installing = installer->installTask(apps, serial);
            QCoro::waitFor(std::move(installing));
            waitUntil([&] { return installer->packages().size() == 2; });
            return nullptr;
        });
    gallery.shoot(QStringLiteral("21-apps-abi-refused"), readyWithPhones, [&](Shot &shot) -> QQuickWindow * {
        startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Running);
        shot.selectTab(2);
        const QUrl game(gallery.sim.writeApk(QStringLiteral("Racing Game.apk"), {QStringLiteral("x86_64")}));
        auto installing = shot.app->installer()->installTask({game}, QStringLiteral("emulator-5554"));
        QCoro::waitFor(std::move(installing));
        return nullptr;
    });
    gallery.shoot(
        QStringLiteral("22-phones-system-image-missing"),
        [&](SimHost &host) {
            readyWithPhones(host);
            QDir(host.sdkRoot() + QStringLiteral("/system-images/android-34")).removeRecursively();
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            EmulatorProcess *runner
                = startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Stopped);
            waitUntil([&] { return runner->failure().has_value(); });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("23-phones-stale-lock"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.setBehaviour(QStringLiteral("emulator.die"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Stopped);
            waitUntil([&] { return !shot.app->store()->lockedPhones().isEmpty(); });
            return nullptr;
        });

    gallery.shoot(
        QStringLiteral("24-phones-booting-slowly"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.setBehaviour(QStringLiteral("emulator.never-boot"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            EmulatorProcess::Timing timing;
            timing.slowBootAfter = std::chrono::seconds(4);
            EmulatorProcess::setTiming(timing);
            phonesTab(shot);
            EmulatorProcess *runner
                = startAndWait(shot, QStringLiteral("Pixel_7_API_34"), EmulatorProcess::State::Booting);
            waitUntil([&] { return runner->slowBoot(); });
            EmulatorProcess::setTiming({});
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("25-phones-disk-use-and-started-elsewhere"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.startPhone(QStringLiteral("Pixel_8_Play"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            phonesTab(shot);
            waitUntil([&] { return !shot.app->store()->elsewhere().isEmpty(); });
            return nullptr;
        });
    gallery.shoot(
        QStringLiteral("26-new-phone-image-sizes"),
        [&](SimHost &host) {
            readyWithPhones(host);
            host.installSystemImage(QStringLiteral("system-images;android-33;google_apis;arm64-v8a"));
        },
        [&](Shot &shot) -> QQuickWindow * {
            openSheet(shot);
            return nullptr;
        });

    std::printf("%d screens\n", gallery.saved);
    return 0;
}
