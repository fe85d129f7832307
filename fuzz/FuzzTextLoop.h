// Text runs have two inner loops: thirty-two bytes at a time where the processor has AVX2,
// sixteen otherwise. A fuzzer on a machine with AVX2 would never reach the baseline loop that
// other machines run, so inputs of odd length take it.
#pragma once

#include <cstddef>

#include "xml/ZQXmlScanText.h"

namespace fuzzsupport {

/// Picks the text-run loop for an input of `size` bytes; call first in every input.
inline void chooseTextLoop(std::size_t size) {
#if defined(__x86_64__) && defined(__GNUC__)
  static const bool detected = ZQCommonNS::xmlscan::wideTextOn;
  ZQCommonNS::xmlscan::wideTextOn = detected && (size & 1) == 0;
#else
  (void)size;
#endif
}

}  // namespace fuzzsupport
