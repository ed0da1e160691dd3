// The files by which the service is one: the pid file and the lock of a start.
#pragma once

constexpr const char* PID_FILE = "/var/run/vyn.pid";

// The descriptor of the locked pid file, -1 in a process that holds none.
extern int pidFilehandle;

// Opens, locks and writes the pid file. The descriptor stays open for the daemon's life, which
// keeps the lock. A failure goes to syslog and ends the process with status 1.
void lockPidFile(const char* pidfile);

// One start after another: waits until no other process is starting the service, ten seconds at
// most. Held until it is released or the process ends.
void takeStartLock();
void releaseStartLock();
