#pragma once

#include "platform/draw/supplier_interface.hpp"

#include <cstdint>
#include <functional>

namespace qoraudiofiltersui {

class ImageProvider;
class ResourceManager;

/// Starts the library. Counted: only the first call acts (the supplier of a nested call is
/// ignored); it starts the effect and dialog libraries, keeps the supplier and makes the
/// resource manager and the image provider. Main thread only.
void Initialize(const qorui::penrig::SupplierInterface* supplier);
/// Undoes `Initialize` at the last call. The count is not guarded: a call without a matching
/// `Initialize` wraps it to 4294967295 and tears nothing down, and later calls of `Initialize`
/// then only add to it. This is the library's contract with its hosts and is kept on purpose.
void Terminate();

/// The three library-wide objects; null while the library is not initialised (and the two
/// owned ones also when their creation failed).
const qorui::penrig::SupplierInterface* GetLibraryDrawSupplier();
ResourceManager* GetLibraryResourceManager();
ImageProvider* GetLibraryImageProvider();
/// How many `Initialize` calls are outstanding.
std::uint32_t GetLibraryUseCount();

/// The libraries this one starts and stops with itself: the effect classes and the media
/// dialogs. Whoever links them in installs their entry points here (the reference host does);
/// an empty function is skipped.
struct LibraryDependencies {
    std::function<void()> initializeAudioFilters;
    std::function<void(const qorui::penrig::SupplierInterface*)> initializeMediaUI;
    std::function<void()> terminateAudioFilters;
    std::function<void()> terminateMediaUI;
};
void SetLibraryDependencies(LibraryDependencies dependencies);

} // namespace qoraudiofiltersui
