#pragma once

namespace qoraudiofiltersui {

/// Enters the scripts, archives and images of src/resources with the resource manager; the
/// build generates it. Called once, by the first resource manager made.
void RegisterEmbeddedResources();

} // namespace qoraudiofiltersui
