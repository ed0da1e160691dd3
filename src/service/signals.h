// Delivery of the daemon's signals to a thread, where their work can wait for locks and the BMC.
#pragma once

// Notes SIGHUP, SIGTERM and SIGINT for later, with an empty mask and no flags. Returns 0, or 1 when
// the system refuses.
int routeSignals();

// Starts the thread that hands each noted signal to signal_handler. Returns 0, or 1 when it can't
// be created.
int startSignalThread();
