// Where an assignment stores.
#pragma once

#include <cstdint>
#include <vector>

#include "script/name_cells.h"
#include "script/sub_expression.h"
#include "script/value.h"

namespace brenta {

/// The storage that a target denotes: a variable, an element somewhere below one, or a property of an object.
///
/// It holds no pointer into a list. Between finding the place and storing there, script code may run (an
/// index of a later step, a property of an object on the way), and may replace or shorten any list that the
/// path goes through; so the steps are kept as names and positions, and are walked once more for the store.
struct Place {
    enum class Kind {
        None,      ///< the target has a value but no storage
        Variable,  ///< `cell`
        Element,   ///< `cell` and at least one step
        Property,  ///< `object` (null: a reference to nothing) and `name`
    };

    struct Step {
        STRID name;  ///< of a member; kNoName: the element at `index`
        std::uint32_t index;
    };

    Kind kind = Kind::None;
    NameCell* cell = nullptr;
    std::vector<Step> steps;
    Value value;  ///< while there is no cell: the value so far
    void* object = nullptr;
    STRID name = kNoName;
};

}  // namespace brenta
