#pragma once

// Runs every gtest case under the Qt application the caller made: in an empty preference store of
// its own, in English, and with no request left in flight at the end.
int runQtTests(int& argc, char** argv);
