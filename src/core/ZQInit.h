// Order of the library's static initialisers: locks and constant strings come first,
// then the built-in names, then everything else.
#pragma once

#define ZQ_INIT_PRIORITY_BASE __attribute__((init_priority(101)))
#define ZQ_INIT_PRIORITY_NAMES __attribute__((init_priority(102)))
// The unload hook is made right after the names, so it is destroyed after every other static
// object of the library and before the names and locks.
#define ZQ_INIT_PRIORITY_UNLOAD __attribute__((init_priority(103)))
