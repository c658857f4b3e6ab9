#pragma once

#include "SimHost.h"

#include <QTemporaryDir>

// A simulated Mac, ready, with one phone created and running: what a test of a running phone's
// features starts from.
struct RunningPhone
{
    explicit RunningPhone(const QString &name)
        : sim(machine.path())
    {
        sim.activate();
        sim.makeReady();
        sim.createPhone(name);
        serial = sim.startPhone(name);
    }

    QTemporaryDir machine;
    SimHost sim;
    QString serial;
};
