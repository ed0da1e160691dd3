// Turning the invoking process into the daemon.
#pragma once

// Returns 1 when a daemon already runs. Otherwise the invoking process ends here with status 0
// (1 when the configuration can't be written), and in the daemon 0 is returned once all workers
// have ended.
int start();

// Detaches the process, closes every descriptor, locks and writes the pid file. Returns only in
// the daemon; at once, with nothing done, under process 1.
void skeleton_daemon(const char* rundir, const char* pidfile);
