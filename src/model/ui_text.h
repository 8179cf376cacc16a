// SPDX-License-Identifier: Apache-2.0
// Marks a text that the window shows in the user's language: the translation tools collect the
// marked texts, and the window looks each one up as it draws it. The text itself is unchanged,
// so reports and the command line keep it as written.
#pragma once

#define QUARBEL_UI_TEXT(text) text
