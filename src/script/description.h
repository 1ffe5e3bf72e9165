// The answer to `reflect(object)`: a value that tells a class, its properties and its methods.
#pragma once

#include <initializer_list>

#include "brenta/scriptable.h"

namespace brenta {

struct DescribedMethod {
    const char* name;
    std::initializer_list<const char*> parameters;
};

/// Stores the description, if a result is wanted, and is true. A structure named after the class holds the
/// lists "Data" and "Methods"; a property, and a parameter of a method, is an int 0 with its name. Methods of
/// one name stand once for each form.
bool AnswerDescription(const CCoreScriptable::IOB& request, const char* className,
                       std::initializer_list<const char*> properties,
                       std::initializer_list<DescribedMethod> methods);

}  // namespace brenta
