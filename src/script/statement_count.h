// How many statements there are, for those who look for what a failure has left behind.
#pragma once

namespace brenta {

/// Statements that the calling thread has made, less those that it has destroyed.
long CountStatements();

}  // namespace brenta
