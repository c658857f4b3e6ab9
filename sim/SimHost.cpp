#include "SimHost.h"
SimHost::SimHost(const QString &) { }
