// SPDX-License-Identifier: Apache-2.0
// `quarbel reference [--json]`: the reference results that ship with Quarbel.
#pragma once

namespace quarbel::cli {

// Prints one line per reference: name, machine, global score, Quarbel version and date.
int referenceCommand(bool asJson);

} // namespace quarbel::cli
