#include "common/ZQObject.h"

namespace ZQCommonNS {

ZQObjectBase::~ZQObjectBase() = default;

ZQRCObject::~ZQRCObject() = default;

int ZQRCObject::release() const {
  int before = m_refCount.fetch_sub(1, std::memory_order_seq_cst);
  if (before < 2) {
    delete this;
  }
  return before - 1;
}

void ZQRCObject::DebugPrintInstanceCount(const char*) {}

void ZQRCObject::DebugPrintInstanceId(const char*, int) {}

}  // namespace ZQCommonNS
