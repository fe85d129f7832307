// The public number formatting: the format reader with the per-language letter alphabets.
#include <atomic>
#include <map>

#include "common/ZQLang.h"
#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "util/ZQFormatNumberAlphabetData.h"
#include "util/ZQFormatNumberInternal.h"
#include "util/ZQUtilInternal.h"

namespace ZQCommonNS {

namespace {

using AlphabetMap = std::map<ZQLang, UnicodeString>;

// Latin, Greek and Cyrillic, each in upper and lower case.
struct AlphabetMaps {
  AlphabetMap latinUpper, latinLower, greekUpper, greekLower, cyrillicUpper, cyrillicLower;
};

std::atomic<AlphabetMaps*> s_maps{nullptr};

void releaseAlphabets() {
  ZQMutex guard;
  delete s_maps.exchange(nullptr, std::memory_order_acq_rel);
}

// Built once under the library lock; afterwards read without one.
const AlphabetMaps& alphabetMaps() {
  if (AlphabetMaps* maps = s_maps.load(std::memory_order_acquire)) return *maps;
  ZQMutex guard;
  if (AlphabetMaps* maps = s_maps.load(std::memory_order_acquire)) return *maps;
  auto* maps = new AlphabetMaps();
  for (const util::LanguageAlphabet& a : util::kLanguageAlphabets) {
    const ZQLang lang(a.language);
    AlphabetMap* upper = &maps->latinUpper;
    AlphabetMap* lower = &maps->latinLower;
    if (a.script == util::AlphabetScript::Greek) {
      upper = &maps->greekUpper;
      lower = &maps->greekLower;
    } else if (a.script == util::AlphabetScript::Cyrillic) {
      upper = &maps->cyrillicUpper;
      lower = &maps->cyrillicLower;
    }
    if (a.upper != nullptr) upper->emplace(lang, UnicodeString(a.upper));
    if (a.lower != nullptr) lower->emplace(lang, UnicodeString(a.lower));
  }
  util::addCleanup(&releaseAlphabets);
  s_maps.store(maps, std::memory_order_release);
  return *maps;
}

const UnicodeString* findIn(const AlphabetMap& map, const ZQLang& lang) {
  auto it = map.find(lang);
  return it == map.end() ? nullptr : &it->second;
}

// "A" and "a" try the three scripts in turn; the Greek and Cyrillic tokens only their own.
const UnicodeString* chooseAlphabet(char16_t first, const void* context) {
  const ZQLang& lang = *static_cast<const ZQLang*>(context);
  if (lang.isNullLang()) return nullptr;
  const AlphabetMaps& maps = alphabetMaps();
  const UnicodeString* found = nullptr;
  switch (first) {
    case u'A':
      if (!(found = findIn(maps.latinUpper, lang)) && !(found = findIn(maps.greekUpper, lang)))
        found = findIn(maps.cyrillicUpper, lang);
      return found;
    case u'a':
      if (!(found = findIn(maps.latinLower, lang)) && !(found = findIn(maps.greekLower, lang)))
        found = findIn(maps.cyrillicLower, lang);
      return found;
    case 0x0391:
      return findIn(maps.greekUpper, lang);
    case 0x03B1:
      return findIn(maps.greekLower, lang);
    case 0x0410:
      return findIn(maps.cyrillicUpper, lang);
    case 0x0430:
      return findIn(maps.cyrillicLower, lang);
    default:
      return nullptr;
  }
}

}  // namespace

UnicodeString ZQUtil::formatNumber(long long n, const UnicodeString& format,
                                   const UnicodeString& groupSeparator, int groupSize, ZQLang lang,
                                   ZQNameEnum /*letterValue*/) {
  return util::formatNumberWith(n, format, groupSeparator, groupSize, &chooseAlphabet, &lang);
}

UnicodeString ZQUtil::formatNumber(long long n, const UnicodeString& format, ZQLang lang) {
  // The long form without a second copy of the language.
  return util::formatNumberWith(n, format, UnicodeString(), 0, &chooseAlphabet, &lang);
}

}  // namespace ZQCommonNS
