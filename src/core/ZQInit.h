// Order of the library's static initialisers: locks and constant strings come first,
// then the built-in names, then everything else.
#pragma once

#define ZQ_INIT_PRIORITY_BASE __attribute__((init_priority(101)))
#define ZQ_INIT_PRIORITY_NAMES __attribute__((init_priority(102)))
