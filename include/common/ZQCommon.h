// Umbrella header: everything the library offers.
#pragma once

#include "common/ZQColor.h"
#include "common/ZQError.h"
#include "common/ZQExport.h"
#include "common/ZQLength.h"
#include "common/ZQLock.h"
#include "common/ZQName.h"
#include "common/ZQNameEnum.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQObject.h"
#include "common/ZQString.h"
#include "common/ZQTypeId.h"
#include "common/ZQUtil.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"
