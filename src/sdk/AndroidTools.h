#pragma once

#include "ProcessResult.h"

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <QCoro/QCoroTask>

#include <optional>

// Where the SDK and every tool are, and the environment every child gets. Nothing is cached:
// a tool installed a moment ago is found by the next question.
namespace AndroidTools {

QString appSupportDir();
QString sdkRoot();
std::optional<QString> firstExecutable(const QStringList &paths);

std::optional<QString> sdkManager();
std::optional<QString> avdManager();
std::optional<QString> adbPath();
std::optional<QString> emulatorPath();
std::optional<QString> brewPath();
std::optional<QString> javaHome();

// What a Java home's "release" file says about the Java in it.
struct JavaRelease
{
    int version = 0; // the feature release: 17 for "17.0.13", 8 for "1.8.0_392"; 0 when the file does not say
    QString arch; // OS_ARCH: "aarch64" on Apple silicon, "x86_64" for Intel
};
JavaRelease javaRelease(const QString &home);
QString licenseFile();

QProcessEnvironment environment();
void ensureSDKFolder();

// Runs adb with "-s" and the serial first, when a serial is given.
QCoro::Task<ProcessResult> runADB(QStringList args, std::optional<QString> serial = std::nullopt,
    std::optional<double> timeout = std::nullopt);

} // namespace AndroidTools
