#pragma once

// Runs every gtest case under the Qt application the caller made, in an empty preference store of
// its own and in English.
int runQtTests(int& argc, char** argv);
