#include "script/description.h"

namespace brenta {

namespace {

Var NamedList(const char* name) {
    return Var(TOrderedList<Var>(), StrId(name));
}

void AddNames(Var& list, std::initializer_list<const char*> names) {
    for (const char* name : names)
        list.Add(Var(0, StrId(name)));
}

}  // namespace

bool AnswerDescription(const CCoreScriptable::IOB& request, const char* className,
                       std::initializer_list<const char*> properties,
                       std::initializer_list<DescribedMethod> methods) {
    if (request.result == nullptr) return true;
    Var data = NamedList("Data");
    AddNames(data, properties);
    Var methodList = NamedList("Methods");
    for (const DescribedMethod& method : methods) {
        Var entry = NamedList(method.name);
        AddNames(entry, method.parameters);
        methodList.Add(entry);
    }
    Var description = NamedList(className);
    description.Add(data);
    description.Add(methodList);
    *request.result = description;
    return true;
}

}  // namespace brenta
