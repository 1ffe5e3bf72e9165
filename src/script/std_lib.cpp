// The standard library: two prompts. The texts are shown as they are, never used as formats.
#include "brenta/framework.h"
#include "brenta/scriptable.h"
#include "script/description.h"

namespace brenta {

namespace {

/// Interned on first use; two engines on two threads may get there together.
struct MethodNames {
    STRID prompt = StrId("Prompt");
    STRID promptYesNo = StrId("PromptYesNo");
};

const MethodNames& Names() {
    static const MethodNames names;
    return names;
}

/// The first argument's text; "" when there is none, or none that is a string.
const char* MessageOf(const CCoreScriptable::IOB& request) {
    const Var* first = request.arguments == nullptr ? nullptr : request.arguments->GetHead();
    return first != nullptr && first->GetKind() == VarKind::String ? StrPtr(first->GetString()) : "";
}

bool CallMethod(CCoreScriptable::IOB& request) {
    if (request.name == Names().prompt) {
        // The result slot stays as it is: a prompt has no value.
        AfxMessageBox(MessageOf(request), MB_OK, 0);
        return true;
    }
    if (request.name != Names().promptYesNo) return false;
    const bool isYes = AfxMessageBox(MessageOf(request), MB_YESNO, 0) == IDYES;
    if (request.result != nullptr) *request.result = isYes;
    return true;
}

}  // namespace

bool CStdScriptLib::ScriptAction(IOB& request) {
    switch (request.action) {
        case kCall:
            return CallMethod(request);
        case kDescribe:
            return AnswerDescription(request, "CStdScriptLib", {},
                                     {{"Prompt", {"msg"}}, {"PromptYesNo", {"msg"}}});
        default:
            return false;
    }
}

std::size_t CStdScriptLib::SizeOf() const {
    return sizeof(*this);
}

const char* CStdScriptLib::GetClassName() const {
    return "CStdScriptLib";
}

const char* CStdScriptLib::GetBaseClassName() const {
    return "CCoreScriptable";
}

CStdScriptLib::~CStdScriptLib() = default;

CCoreScriptable* CreateCStdScriptLibObject() {
    return new CStdScriptLib;
}

}  // namespace brenta
