// Stop, pause and resume, from the command line and from the BMC, and the end of the daemon.
#pragma once

// Command line. pause and resume return 0, or 1 after printing "no service"; stop returns only to
// say 1 and otherwise ends the process with status 0. (pause itself is a system call's name.)
int stop();
int pause_service();
int resume_service();

// The same sequences on the BMC's request, in the daemon; return 0.
int user_request_pause();
int user_request_resume();

// Does what belongs to a signal, in thread context: SIGINT ends the process, SIGTERM blanks the
// BMC first, any other is reported to syslog.
void signal_handler(int sig);

// Closes the pid file that this process holds and prints "close done".
void daemonShutdown();
