// The per-language alphabets of number formatting, as data. Irregular rows are deliberate:
// "fi" has no G in upper case, "be" has fewer upper than lower letters, "de" has lower case
// only, and the lower-case "uz" row is written in capitals.
#pragma once

namespace ZQCommonNS::util {

enum class AlphabetScript { Latin, Greek, Cyrillic };

struct LanguageAlphabet {
  const char* language;
  AlphabetScript script;
  const char16_t* upper;  // null: no upper-case alphabet
  const char16_t* lower;
};

inline constexpr LanguageAlphabet kLanguageAlphabets[] = {
    {"de", AlphabetScript::Latin, nullptr, u"abcdefghijklmnopqrstuvwxyzß"},
    {"it", AlphabetScript::Latin, u"ABCDEFGHILMNOPQRSTUVZ", u"abcdefghilmnopqrstuvz"},
    {"fi", AlphabetScript::Latin, u"ADEHIJKLMNOPRSTUVYÄÖ", u"adeghijklmnoprstuvyäö"},
    {"da", AlphabetScript::Latin, u"ABCDEFGHIJKLMNOPQRSTUVWXYZÆØÅ",
     u"abcdefghijklmnopqrstuvwxyzæøå"},
    {"no", AlphabetScript::Latin, u"ABCDEFGHIJKLMNOPQRSTUVWXYZÆØÅ",
     u"abcdefghijklmnopqrstuvwxyzæøå"},
    {"sv", AlphabetScript::Latin, u"ABCDEFGHIJKLMNOPQRSTUVWXYZÅÄÖ",
     u"abcdefghijklmnopqrstuvwxyzåäö"},
    {"nl", AlphabetScript::Latin, u"ABCDEFGHIJKLMNOPQRSTUVWXYĲZ", u"abcdefghijklmnopqrstuvwxyĳz"},
    {"hu", AlphabetScript::Latin, u"AÁBCDEÉFGHIÍJKLMNOÓÖŐPRSTUÚÜŰVZ",
     u"aábcdeéfghiíjklmnoóöőprstuúüűvz"},
    {"et", AlphabetScript::Latin, u"ABCDEFGHIJKLMNOPQRSŠZŽTUVWÕÄÖÜXY",
     u"abcdefghijklmnopqrsšzžtuvwõäöüxy"},
    {"es", AlphabetScript::Latin, u"ABCDEFGHIJKLMNÑOPQRSTUVWXYZ", u"abcdefghijklmnñopqrstuvwxyz"},
    {"pl", AlphabetScript::Latin, u"AĄBCĆDEĘFGHIJKLŁMNŃOÓPRSŚTUWYZŹŻ",
     u"aąbcćdeęfghijklłmnńoóprsśtuwyzźż"},
    {"cs", AlphabetScript::Latin, u"AÁBCČDĎEÉĚFGHIÍJKLMNŃOÓPQRŘSŚTŤUÚŮVWXYÝZŽ",
     u"aábcčdďeéěfghiíjklmnńoópqrřsśtťuúůvwxyýzž"},
    {"sk", AlphabetScript::Latin, u"AÁÄBCČDĎEÉFGHIÍJKLĹĽMNŃOÓÔPQRSŚTŤUÚVWXYÝZŽ",
     u"aáäbcčdďeéfghiíjklĺľmnńoóôpqrsśtťuúvwxyýzž"},
    {"sl", AlphabetScript::Latin, u"ABCČDEFGHIJKLMNOPRSŚTUVZŽ", u"abcčdefghijklmnoprsśtuvzž"},
    {"lt", AlphabetScript::Latin, u"AĄBCČDEĘĖFGHIĮYJKLMNOPRSŚTUŲŪVZŽ",
     u"aąbcčdeęėfghiįyjklmnoprsśtuųūvzž"},
    {"tr", AlphabetScript::Latin, u"ABCÇDEFGĞHIİJKLMNOÖPRSŞTUÜVYZ",
     u"abcçdefgğhıijklmnoöprsştuüvyz"},
    {"is", AlphabetScript::Latin, u"AÁBCDÐEÉFGHIÍJKLMNOÓPRSTUÚVXYÝZÞÆÖ",
     u"aábcdðeéfghiíjklmnoóprstuúvxyýzþæö"},
    {"eo", AlphabetScript::Latin, u"ABCĈDEFGĜHĤIJĴKLMNOPRSŜTUŬVZ", u"abcĉdefgĝhĥijĵklmnoprsŝtuŭvz"},
    {"ro", AlphabetScript::Latin, u"AĂÂBCDEFGHIÎJKLMNOPRSŞTŢUVXZ", u"aăâbcdefghiîjklmnoprsştţuvxz"},
    {"ga", AlphabetScript::Latin, u"ABCDEFGHILMNOPRSTU", u"abcdefghilmnoprstu"},
    {"lv", AlphabetScript::Latin, u"AĀBCČDEĒFGĢHIĪJKĶLĻMNŅOPRSŠTUŪVZŽ",
     u"aābcčdeēfgģhiījkķlļmnņoprsštuūvzž"},
    {"sq", AlphabetScript::Latin, u"ABCÇDEËFGHIJKLMNOPQRSTUVXYZ", u"abcçdeëfghijklmnopqrstuvxyz"},
    {"eu", AlphabetScript::Latin, u"ABCDEFGHIJKLMNÑOPQRSTUVWXYZ", u"abcdefghijklmnñopqrstuvwxyz"},
    {"mt", AlphabetScript::Latin, u"ABĊDEFĠGHĦIJKLMNOPQRSTUVWXŻZ", u"abċdefġghħijklmnopqrstuvwxżz"},
    {"vi", AlphabetScript::Latin, u"AĂÂBCDĐEÊGHIKLMNOÔƠPQRSTUƯVXY",
     u"aăâbcdđeêghiklmnoôơpqrstuưvxy"},
    {"ru", AlphabetScript::Cyrillic, u"АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЫЭЮЯ",
     u"абвгдежзиклмнопрстуфхцчшщыэюя"},
    {"uk", AlphabetScript::Cyrillic, u"АБВГЃДЕЄЖЗИІЇКЛМНОПРСТУФХЦЧШЩЮЯЬ",
     u"абвгѓдеєжзиіїклмнопрстуфхцчшщюяь"},
    {"bg", AlphabetScript::Cyrillic, u"АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЪЬЮЯ",
     u"абвгдежзиклмнопрстуфхцчшщъьюя"},
    {"sr", AlphabetScript::Cyrillic, u"АБВГДЂЕЖЗИЈКЛЉМНЊОПРСТЋУФХЦЧЏШ",
     u"абвгдђежзијклљмнњопрстћуфхцчџш"},
    {"mk", AlphabetScript::Cyrillic, u"АБВГДЃЕЖЗЅИЈКЛЉМНЊОПРСТЌУФХЦЧЏШ",
     u"абвгдѓежзѕијклљмнњопрстќуфхцчџш"},
    {"be", AlphabetScript::Cyrillic, u"АБВГДЖЗІКЛМНОПРСТУФХЦЧШЫЬЭ",
     u"абвгдежзіклмнопрстуфхцчшыьэюя"},
    {"tg", AlphabetScript::Cyrillic, u"АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЬЭЮЯҒӢҚӮҲҶ",
     u"абвгдежзиклмнопрстуфхчшъьэюяғӣқӯҳҷ"},
    {"uz", AlphabetScript::Cyrillic, u"АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЭЮЯҚҒҲ",
     u"АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЭЮЯҚҒҲ"},
    {"el", AlphabetScript::Greek, u"ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ", u"αβγδεζηθικλμνξοπρστυφχψω"},
};

}  // namespace ZQCommonNS::util
