// Umbrella header: everything the library offers.
#pragma once

#include "common/ZQChar.h"
#include "common/ZQError.h"
#include "common/ZQExport.h"
#include "common/ZQLock.h"
#include "common/ZQName.h"
#include "common/ZQNameEnum.h"
#include "common/ZQObject.h"
#include "common/ZQString.h"
#include "common/ZQTypeId.h"
#include "common/ZQUri.h"
#include "common/ZQUtil.h"
#include "common/ZQXmlCatalogs.h"
