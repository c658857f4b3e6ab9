# Shared by the simulated tools. Each installed tool is a stub that sets SIM_TOOLS (this folder),
# SIM_STATE (the simulated Mac's state folder) and SIM_SELF (where the stub lives), then runs the tool
# here; the child environment the app gives a tool carries nothing else of ours.

SIM_SCALE=0.05
[ -f "$SIM_STATE/scale" ] && SIM_SCALE=$(cat "$SIM_STATE/scale")

# Sh text a test gave this tool to run before it acts, for output no switch gives: it may print and exit,
# or, in the emulator, redefine the hooks. Sourced with the tool's own arguments.
SIM_SCRIPT="$SIM_STATE/behaviour/$(basename "$0").script"

# sim_sleep SECONDS: sleeps for the simulated time, scaled.
sim_sleep() {
    sleep "$(awk -v s="$1" -v k="$SIM_SCALE" 'BEGIN { printf "%.3f", s * k }')"
}

# sim_behaviour KEY: prints the switch's value and succeeds when a test or the demo set it.
sim_behaviour() {
    [ -f "$SIM_STATE/behaviour/$1" ] || return 1
    cat "$SIM_STATE/behaviour/$1"
}

# sim_install_stub TOOL PATH: installs an executable stub at PATH that runs this folder's TOOL.
sim_install_stub() {
    mkdir -p "$(dirname "$2")"
    {
        echo '#!/bin/sh'
        printf "SIM_TOOLS='%s'; SIM_STATE='%s'; SIM_SELF=\"\$0\"\n" "$SIM_TOOLS" "$SIM_STATE"
        echo 'export SIM_TOOLS SIM_STATE SIM_SELF'
        printf 'exec /bin/sh "$SIM_TOOLS/%s" "$@"\n' "$1"
    } >"$2"
    chmod 755 "$2"
}

# sim_install_jdk HOME VERSION ARCH: a JDK's Java home: the java launcher and the release file that names
# the JDK's version and processor, as every JDK since Java 9 has.
sim_install_jdk() {
    sim_install_stub java "$1/bin/java"
    printf 'IMPLEMENTOR="Homebrew"\nJAVA_VERSION="%s"\nOS_ARCH="%s"\nOS_NAME="Darwin"\n' "$2" "$3" >"$1/release"
}

# sim_java_version: the feature release of the Java at JAVA_HOME, from its release file (8 for 1.8.0_x).
sim_java_version() {
    sed -n 's/^JAVA_VERSION="\(1\.\)\{0,1\}\([0-9]*\).*/\2/p' "$JAVA_HOME/release" 2>/dev/null
}

# sim_bar PERCENT LABEL: one frame of sdkmanager's status line: a 40-column bar, the percentage and the
# label, padded to 80 columns and ended by a carriage return, so the next frame is drawn over it.
sim_bar() {
    printf '%s\r' "$(awk -v p="$1" -v t="$2" 'BEGIN {
        s = "["; for (i = 1; i < 40; i++) s = s (i < 40 * p / 100 ? "=" : " ")
        s = s "] " p "% " t " "; while (length(s) < 80) s = s " "; print substr(s, 1, 80) }')"
}

# sim_failing NAME...: succeeds when the demo or a test asked, through the switch known-failure, for one
# of these failures that people meet with the real tools.
sim_failing() {
    wanted=$(sim_behaviour known-failure) || return 1
    for each in "$@"; do
        [ "$wanted" = "$each" ] && return 0
    done
    return 1
}

# sim_needs_java: sdkmanager and avdmanager are Java programs and refuse to run without one, or with a
# Java older than the one they were built for.
sim_needs_java() {
    if sim_failing java-missing; then
        echo "The operation couldn’t be completed. Unable to locate a Java Runtime."
        echo "Please visit http://www.java.com for information on installing Java."
        echo
        exit 1
    fi
    version=$(sim_java_version)
    if sim_failing java-too-old || [ "${version:-17}" -lt 17 ]; then
        tool=$(basename "$0")
        echo "Exception in thread \"main\" java.lang.UnsupportedClassVersionError: com/android/sdklib/tool/$tool/${tool}Cli has been compiled by a more recent version of the Java Runtime (class file version 61.0), this version of the Java Runtime only recognizes class file versions up to 52.0"
        echo "	at java.lang.ClassLoader.defineClass1(Native Method)"
        echo "	at java.lang.ClassLoader.defineClass(ClassLoader.java:756)"
        echo "	at java.net.URLClassLoader.defineClass(URLClassLoader.java:473)"
        exit 1
    fi
    if [ -z "$JAVA_HOME" ] || [ ! -x "$JAVA_HOME/bin/java" ]; then
        echo "ERROR: JAVA_HOME is not set and no 'java' command could be found in your PATH."
        echo
        echo "Please set the JAVA_HOME variable in your environment to match the"
        echo "location of your Java installation."
        exit 1
    fi
}

# sim_emulator_dir SERIAL: the state folder of the simulated emulator behind an adb serial.
sim_emulator_dir() {
    echo "$SIM_STATE/emulators/${1#emulator-}"
}

# sim_alive DIR: the emulator registered in DIR is still running.
sim_alive() {
    [ -f "$1/pid" ] && kill -0 "$(cat "$1/pid")" 2>/dev/null
}

# sim_sparse FILE WRITTEN_KB SIZE_MB: a disk image as the emulator keeps them, WRITTEN_KB of real data
# followed by a hole up to SIZE_MB, so its apparent size is far above what it takes on disk.
sim_sparse() {
    dd if=/dev/zero of="$1" bs=1024 count="$2" 2>/dev/null
    dd if=/dev/zero of="$1" bs=1048576 count=0 seek="$3" 2>/dev/null
}
