#pragma once

#include "AVDInfo.h"
#include "DeviceDef.h"
#include "SystemImage.h"

#include <QList>
#include <QString>

// Reads the listings of avdmanager and sdkmanager. Each function takes the whole output of one run
// and never fails: text it does not recognise just yields fewer records.
namespace AndroidParsers {

// "avdmanager list device": the phone models, in printed order.
QList<DeviceDef> parseDevices(const QString &text);

// "avdmanager list avd": the virtual phones, in printed order, the unloadable ones with their error.
QList<AVDInfo> parseAVDs(const QString &text);

// "sdkmanager --list": the arm64-v8a Google APIs and Google Play images, installed or available. Only
// API 34 and 35 when there are any; highest API first, then by variant, then by id.
QList<SystemImage> parseImages(const QString &text);

}
