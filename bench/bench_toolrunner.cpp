// Times N runs of a trivial tool through ToolRunner::run against the same runs made by hand with
// posix_spawn, two pipes and waitpid, in one process, and prints the ratio (target: at most 2.0).
// Then runs a tool that prints 100 MB and prints the longest event-loop turn meanwhile (target: at
// most 50 ms) and how much memory the run needed beside the two buffers of its result.
#include "EventWatch.h"
#include "ToolRunner.h"

#include <QElapsedTimer>
#include <QFile>

#include <QCoro/QCoroTask>

#include <cstdio>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

const char *const tool = "/bin/echo";

// The floor: spawn, read both pipes to their end, reap.
void spawnByHand()
{
    int out[2];
    int err[2];
    if (pipe(out) != 0 || pipe(err) != 0)
        qFatal("pipe failed");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, out[1], 1);
    posix_spawn_file_actions_adddup2(&actions, err[1], 2);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    posix_spawn_file_actions_addclose(&actions, err[0]);
    char arg0[] = "echo";
    char arg1[] = "hello";
    char *argv[] = {arg0, arg1, nullptr};
    char path[] = "PATH=/usr/bin:/bin";
    char *envp[] = {path, nullptr};
    pid_t pid = 0;
    if (posix_spawn(&pid, tool, &actions, nullptr, argv, envp) != 0)
        qFatal("posix_spawn failed");
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    close(err[1]);
    char buffer[4096];
    for (int fd : {out[0], err[0]}) {
        while (read(fd, buffer, sizeof buffer) > 0) { }
        close(fd);
    }
    int status = 0;
    waitpid(pid, &status, 0);
}

QCoro::Task<> spawnThroughRunner(int runs)
{
    QProcessEnvironment env;
    env.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
    for (int i = 0; i < runs; ++i) {
        auto running = ToolRunner::run(QString::fromLatin1(tool), {QStringLiteral("hello")}, env);
        const ProcessResult result = co_await std::move(running);
        if (result.text != QLatin1String("hello\n"))
            qFatal("unexpected output");
    }
}

// The largest resident size so far, in bytes (Linux), or 0 where it cannot be read.
qint64 peakResident()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).trimmed().split(' ').value(0).toLongLong() * 1024;
    }
    return 0;
}

void bulkOutput(EventWatch &app)
{
    constexpr qint64 size = 100'000'000;
    QProcessEnvironment env;
    env.insert(QStringLiteral("PATH"), QStringLiteral("/usr/bin:/bin"));
    const qint64 before = peakResident();
    app.restart();
    QElapsedTimer clock;
    clock.start();
    const ProcessResult result = QCoro::waitFor(ToolRunner::run(QStringLiteral("/bin/sh"),
        {QStringLiteral("-c"), QStringLiteral("head -c %1 /dev/zero | tr '\\0' x | fold -w 79").arg(size)},
        env));
    const double ms = clock.nsecsElapsed() / 1e6;
    // The result holds the text (two bytes a character) and the raw standard output.
    const qint64 buffers = result.text.size() * 2 + result.stdoutData.size();
    const qint64 grown = peakResident() - before;
    std::printf("tool runner: %lld bytes of output in %.0f ms\n",
        static_cast<long long>(result.stdoutData.size()), ms);
    std::printf("  longest event-loop turn: %.1f ms (target: at most 50)\n", app.longestOwnMs());
    std::printf("  peak memory grew %.0f MB for %.0f MB of result buffers (%.2f times)\n", grown / 1e6,
        buffers / 1e6, double(grown) / double(buffers));
}

} // namespace

int main(int argc, char *argv[])
{
    EventWatch app(argc, argv);
    const int runs = argc > 1 ? QByteArray(argv[1]).toInt() : 500;

    QElapsedTimer clock;
    QCoro::waitFor(spawnThroughRunner(20)); // warm up both paths
    for (int i = 0; i < 20; ++i)
        spawnByHand();

    clock.start();
    for (int i = 0; i < runs; ++i)
        spawnByHand();
    const double byHand = clock.nsecsElapsed() / 1e6;

    clock.restart();
    QCoro::waitFor(spawnThroughRunner(runs));
    const double runner = clock.nsecsElapsed() / 1e6;

    std::printf("tool runner: %d runs of %s\n", runs, tool);
    std::printf("  posix_spawn + pipes + waitpid: %8.1f ms (%.3f ms a run)\n", byHand, byHand / runs);
    std::printf("  ToolRunner::run:               %8.1f ms (%.3f ms a run)\n", runner, runner / runs);
    std::printf("  ratio: %.2f (target: at most 2.0)\n", runner / byHand);

    bulkOutput(app);
    return 0;
}
