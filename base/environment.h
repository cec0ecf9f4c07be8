#pragma once
// The variables of this process's environment.

// The value of the variable, or null when it is not set. Valid until the environment changes.
[[nodiscard]] const char* LEnvironmentGet(const char* name);
// All variables as "NAME=value", ending in null; for handing on to a child.
[[nodiscard]] char* const* LEnvironmentVariables();
