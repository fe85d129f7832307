// Raising of the common failures: one wording per code, one source name per id.
#pragma once

#include "common/ZQError.h"

namespace ZQCommonNS {

/// Ids of the functions that raise common failures; their texts follow "ZQCommonNS::".
enum ZQErrorSource : int {
  ZQSRC_DOCUMENT_LOAD_NEXT_NODE = 0,
  ZQSRC_DOCUMENT_DO_SAVE = 1,
  ZQSRC_ATTR_MAP_SET_NAMED_ITEM = 2,
  ZQSRC_ATTR_MAP_SET_NAMED_ITEM_NS = 3,
  ZQSRC_ELEMENT_REMOVE_ATTRIBUTE_NODE = 4,
  ZQSRC_NODE_SET_NODE_VALUE = 5,
  ZQSRC_NODE_INSERT_BEFORE = 6,
  ZQSRC_NODE_REPLACE_CHILD = 7,
  ZQSRC_NODE_REMOVE_CHILD = 8,
  ZQSRC_NODE_APPEND_CHILD = 9,
  ZQSRC_PARSER_CHECK_STREAM = 10,
  ZQSRC_PARSER_PUSH_STREAM = 11,
  ZQSRC_PARSER_SET_INPUT = 12,
  ZQSRC_PARSER_IS_WHITESPACE = 13,
  ZQSRC_PARSER_IS_EMPTY_ELEMENT_TAG = 14,
  ZQSRC_PARSER_GET_ATTRIBUTE_NAMESPACE = 15,
  ZQSRC_PARSER_GET_ATTRIBUTE_NAME = 16,
  ZQSRC_PARSER_GET_ATTRIBUTE_PREFIX = 17,
  ZQSRC_PARSER_GET_ATTRIBUTE_VALUE = 18,
  ZQSRC_SERIALIZER_SET_OUTPUT = 19,
  ZQSRC_SERIALIZER_START_DOCUMENT = 20,
  ZQSRC_SERIALIZER_ATTRIBUTE = 21,
  ZQSRC_SERIALIZER_END_TAG = 22,
  ZQSRC_SERIALIZER_DOCDECL = 23,
  ZQSRC_SERIALIZER_CHECK_STREAM = 24,
  ZQSRC_MSXML_PARSER = 25,
  ZQSRC_XML_CATALOGS = 26,
  ZQSRC_TEMP_FILE = 27,
};

/// Throws the ZQError of a common failure; never returns. Unused arguments take
/// ZQEmptyString::EMPTY_VALUE.
[[noreturn]] ZQCOMMON_API void throwCommonError(int code, int sourceId, const UnicodeString& arg,
                                                const UnicodeString& arg2);

/// The message that throwCommonError gives for a code (exposed for tests and tools).
ZQCOMMON_API UnicodeString formatCommonErrorMessage(int code, const UnicodeString& arg,
                                                    const UnicodeString& arg2);

/// The source text for an id, with "ZQCommonNS::" in front, or empty.
ZQCOMMON_API UnicodeString commonErrorSource(int sourceId);

}  // namespace ZQCommonNS
