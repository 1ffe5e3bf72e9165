// The static object that registers the standard library's class.
#pragma once

#include "brenta/scriptable.h"

namespace brenta {

class CStdScriptLibFactoryClass : public CScriptFactoryBase {
 public:
    CStdScriptLibFactoryClass() { RegisterScriptableClass("CStdScriptLib", &CreateCStdScriptLibObject); }
};

}  // namespace brenta
