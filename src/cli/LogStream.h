// The library's log as the companion shows it.
#pragma once

namespace thermika::cli {

/// Off, or every line on standard error, outside bytes in it escaped.
/// Process: `stderr` is another stream from then on, which writes to descriptor 2 as before.
void configureLog(bool isShown);

}  // namespace thermika::cli
