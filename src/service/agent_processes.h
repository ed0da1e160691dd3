// Which agent processes there are.
#pragma once

// Services of this user other than the caller: processes whose program has the agent's name in its
// own, one-shot runs left out. Only the first digit of their number and the caller together counts;
// -1 when the process list can't be read.
int getServiceCount();

// 0 running, 1 paused, 2 stopped; another value only when the pause segment holds another byte.
int getVYNStatus();
