#include "DeviceDef.h"

#include <QHashFunctions>

size_t qHash(const DeviceDef &device, size_t seed)
{
    return qHashMulti(seed, device.id, device.name, device.oem);
}
