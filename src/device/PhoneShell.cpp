#include "PhoneShell.h"

namespace PhoneShell {

QString quote(const QString &value)
{
    // Inside single quotes only the quote itself is special: close, an escaped quote, reopen.
    QString quoted = value;
    quoted.replace(QLatin1Char('\''), QStringLiteral("'\\''"));
    return QLatin1Char('\'') + quoted + QLatin1Char('\'');
}

} // namespace PhoneShell
