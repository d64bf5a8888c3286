// Starting the engine library: what a host (and mvsql, the tests and the
// benchmarks) calls once before using it. Registration is explicit because
// static self-registration is dropped by linkers from static libraries.
#pragma once

namespace mv {

// Registers the message texts and the built-in syntax providers. Calling it
// again changes nothing.
void InitializeEngine();

}  // namespace mv
