#pragma once
#include <QString>
class SimHost
{
public:
    explicit SimHost(const QString &root);
};
