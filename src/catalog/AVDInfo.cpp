#include "AVDInfo.h"

#include <QHashFunctions>

size_t qHash(const AVDInfo &phone, size_t seed)
{
    return qHashMulti(seed, phone.name, phone.path, phone.basedOn, phone.error);
}
