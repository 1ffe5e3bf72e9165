#include "brenta/http.h"
#include "platform/own_version.h"

namespace brenta {

CoreString GetUserAgent() {
    CoreString agent;
    agent.Format("BRENTA_AGENT(%s)", OwnVersion()());
    return agent;
}

}  // namespace brenta
