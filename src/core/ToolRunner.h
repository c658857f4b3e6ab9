#pragma once

#include "ProcessResult.h"
#include "RunningJob.h"

#include <QPointer>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>

#include <QCoro/QCoroTask>

#include <functional>
#include <optional>

// The one way short-lived tools are run: never a shell, always an absolute path and a complete environment.
namespace ToolRunner {

using OutputSink = std::function<void(const QString &chunk)>;

// Output is handed on in pieces of at most this size. A whole read can be as large as a pipe, and the
// text of one that large is allocated afresh from the system every time; pieces this small reuse the
// memory the ones before left.
constexpr qint64 outputSlice = 16 * 1024;

// Why a process could not be started, in the system's words: QProcess's message without the name of
// the call that failed.
QString launchFailureReason(const QProcess &process);

// Resolves exactly once, on the thread that awaited it. Never throws.
// `timeout` is in seconds and only asks the child to terminate; `input` is written to standard
// input, which is then closed (without it, standard input is the null device).
QCoro::Task<ProcessResult> run(QString tool, QStringList args, QProcessEnvironment env,
    std::optional<double> timeout = std::nullopt, std::optional<QString> input = std::nullopt,
    QPointer<RunningJob> job = nullptr, OutputSink onOutput = {});

} // namespace ToolRunner
