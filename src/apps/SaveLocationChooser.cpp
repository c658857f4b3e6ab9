#include "SaveLocationChooser.h"

SaveLocationChooser::SaveLocationChooser(QObject *parent)
    : QObject(parent)
{ }
