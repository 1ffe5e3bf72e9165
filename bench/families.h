// Every family adds its workloads through one of these.
#pragma once

namespace brenta::bench {

void AddScriptWorkloads();

}  // namespace brenta::bench
