// achost render: draws one dialog of an add-on as PNG, as it stands after the add-on's init message
// (the validator's walker finds the command that opens it) or after a script's actions, in any of
// the suite's languages.
#pragma once

#include <string>
#include <vector>

namespace achost::render {

// `achost render ...` with the arguments after "render"; the exit code. `defaultAddon` is drawn from
// when the arguments name no add-on.
int Render(const std::vector<std::string>& arguments, const std::string& defaultAddon);

} // namespace achost::render
