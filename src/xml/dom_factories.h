// The static objects that register the classes of the XML tree.
#pragma once

#include "brenta/xml.h"

namespace brenta {

class CCoreXmlDomAttributeFactoryClass : public CScriptFactoryBase {
 public:
    CCoreXmlDomAttributeFactoryClass() {
        RegisterScriptableClass("CCoreXmlDomAttribute", &CreateCCoreXmlDomAttributeObject);
    }
};

class CCoreXmlDomElementFactoryClass : public CScriptFactoryBase {
 public:
    CCoreXmlDomElementFactoryClass() {
        RegisterScriptableClass("CCoreXmlDomElement", &CreateCCoreXmlDomElementObject);
    }
};

class CCoreXmlDomFactoryClass : public CScriptFactoryBase {
 public:
    CCoreXmlDomFactoryClass() { RegisterScriptableClass("CCoreXmlDom", &CreateCCoreXmlDomObject); }
};

}  // namespace brenta
