// Fixed type numbers of the object tree. Callers store and compare them, so they never change.
#pragma once

namespace ZQCommonNS::ZQTypeId {

inline constexpr unsigned int ZQObjectBase = 0xDF537371u;
inline constexpr unsigned int ZQRCObject = 0xD18D040Au;
inline constexpr unsigned int ZQNameTable = 0xDF2E12FAu;
inline constexpr unsigned int ZQValueArray = 0x5B81E171u;
inline constexpr unsigned int ZQNamedValueMap = 0x2D6DF390u;
inline constexpr unsigned int ZQNamespaceManager = 0xFD1182ADu;
inline constexpr unsigned int ZQNamespaceMap = 0xE8F3CB34u;
inline constexpr unsigned int ZQNode = 0xFF72074Au;
inline constexpr unsigned int ZQAttr = 0x507DD55Fu;  // also answered by Attr
inline constexpr unsigned int AttrNS = 0xF2136280u;
inline constexpr unsigned int ZQElement = 0x9B60777Du;
inline constexpr unsigned int Element = 0x883D36C4u;
inline constexpr unsigned int ElementNS = 0x92C5C0B8u;
inline constexpr unsigned int ZQTextNode = 0xD8444919u;
inline constexpr unsigned int ZQProcessingInstruction = 0x78626383u;
inline constexpr unsigned int ZQDocument = 0x2A780AB6u;
inline constexpr unsigned int ZQDocumentFragment = 0xB7475C6Fu;
inline constexpr unsigned int ZQNodeIterable = 0x6D959880u;
inline constexpr unsigned int ZQNodeList = 0xB426D516u;
inline constexpr unsigned int ChildNodeList = 0xA6531568u;
inline constexpr unsigned int TreeNodeList = 0x78F0F49Eu;
inline constexpr unsigned int ZQNamedNodeMap = 0xDE19E4A4u;
inline constexpr unsigned int AttrNodeMap = 0x95F69A2Cu;
inline constexpr unsigned int ZQXmlParser = 0x34A5686Cu;
inline constexpr unsigned int ZQXmlParserImpl = 0xC6714BC2u;
inline constexpr unsigned int ZQMSXmlParser = 0x7608EA26u;
inline constexpr unsigned int ZQXmlSerializer = 0x5DCEE8F5u;
inline constexpr unsigned int ZQXmlSerializerImpl = 0x40058898u;
inline constexpr unsigned int ZQXmlCatalogs = 0x026E56FEu;
inline constexpr unsigned int ZQXmlCatalogsImpl = 0x03AB9026u;
inline constexpr unsigned int ZQCssParser = 0xF4440044u;
inline constexpr unsigned int ZQCssParserImpl = 0x922A3921u;
inline constexpr unsigned int ZQCssRules = 0x11D99FFEu;
inline constexpr unsigned int ZQCssRulesImpl = 0x90083561u;
inline constexpr unsigned int ZQZipEntry = 0x3DBE4CC1u;
inline constexpr unsigned int ZQZipFileEntry = 0xD8C59E0Cu;

}  // namespace ZQCommonNS::ZQTypeId
