// Every family adds its workloads through one of these.
#pragma once

namespace brenta::bench {

void AddScriptWorkloads();
void AddUnitWorkloads();
void AddNameWorkloads();
void AddHeapWorkloads();
void AddStringWorkloads();
void AddContainerWorkloads();
void AddGrowthWorkloads();
void AddThreadWorkloads();
void AddDocumentWorkloads();
void AddStreamWorkloads();
void AddDocumentGrowthWorkloads();
void AddArchiveWorkloads();

}  // namespace brenta::bench
