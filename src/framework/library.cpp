#include "framework/library.hpp"

#include "framework/effect_catalogue.hpp"
#include "framework/image_provider.hpp"
#include "framework/resource_manager.hpp"
#include "platform/ui/cursor_pictures.hpp"

#include <dlfcn.h>

#include <cstdlib>
#include <exception>
#include <new>
#include <optional>

namespace qoraudiofiltersui {

namespace {

std::uint32_t useCount = 0;
const qorui::penrig::SupplierInterface* drawSupplier = nullptr;
ResourceManager* resourceManager = nullptr;
constexpr int kFirstLibraryCursor = 200;
constexpr int kLastLibraryCursor = 203;
ImageProvider* imageProvider = nullptr;

LibraryDependencies& Dependencies() {
    static LibraryDependencies dependencies;
    return dependencies;
}

// The registrars of the editors live beside the catalogue; naming it here makes every program
// that starts the library link them in, so the host's registry is complete.
[[maybe_unused]] __attribute__((used))
std::span<const EffectEntry> (*const catalogueAnchor)() = &GetEffectCatalogue;

/// The file that holds this code, found from one of its own functions. dladdr takes no
/// reference on the module.
ModuleHandle FindOwnModule() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<const void*>(&FindOwnModule), &info) != 0 && info.dli_fname)
        return ModuleHandle{info.dli_fname};
    return ModuleHandle{};
}

std::optional<std::filesystem::path> OverrideFolderFromEnvironment() {
    const char* folder = std::getenv("QAFUI_RESOURCE_DIR");
    if (!folder || !*folder)
        return std::nullopt;
    return std::filesystem::path(folder);
}

} // namespace

void Initialize(const qorui::penrig::SupplierInterface* supplier) {
    if (useCount != 0) {
        ++useCount;
        return;
    }
    LibraryDependencies& dependencies = Dependencies();
    if (dependencies.initializeAudioFilters)
        dependencies.initializeAudioFilters();
    if (dependencies.initializeMediaUI)
        dependencies.initializeMediaUI(supplier);

    drawSupplier = supplier;
    const ModuleHandle module = FindOwnModule();

    delete resourceManager;
    resourceManager = nullptr;
    // A failure to make either object is not reported: the pointer stays null and the count
    // still rises; factories then fail when they need the object.
    try {
        resourceManager =
            new (std::nothrow) ResourceManager(module, OverrideFolderFromEnvironment());
    } catch (const std::exception&) {
        resourceManager = nullptr;
    }
    try {
        imageProvider = new (std::nothrow) ImageProvider(resourceManager, drawSupplier, nullptr);
    } catch (const std::exception&) {
        imageProvider = nullptr;
    }
    // The graphs' cursors (zoom on either ruler, add and move a point) are the library's own.
    if (resourceManager)
        for (int cursor = kFirstLibraryCursor; cursor <= kLastLibraryCursor; ++cursor)
            resourceManager->MakeCursorFromPNG(cursor);
    ++useCount;
}

void Terminate() {
    const std::uint32_t taken = useCount;
    useCount = taken - 1;
    if (taken != 1)
        return;
    delete imageProvider;
    imageProvider = nullptr;
    for (int cursor = kFirstLibraryCursor; cursor <= kLastLibraryCursor; ++cursor)
        qorui::SetCursorPicture(cursor, {});
    delete resourceManager;
    resourceManager = nullptr;
    drawSupplier = nullptr;
    // Same order as in Initialize, not the reverse.
    LibraryDependencies& dependencies = Dependencies();
    if (dependencies.terminateAudioFilters)
        dependencies.terminateAudioFilters();
    if (dependencies.terminateMediaUI)
        dependencies.terminateMediaUI();
}

const qorui::penrig::SupplierInterface* GetLibraryDrawSupplier() {
    return drawSupplier;
}

ResourceManager* GetLibraryResourceManager() {
    return resourceManager;
}

ImageProvider* GetLibraryImageProvider() {
    return imageProvider;
}

std::uint32_t GetLibraryUseCount() {
    return useCount;
}

void SetLibraryDependencies(LibraryDependencies dependencies) {
    Dependencies() = std::move(dependencies);
}

} // namespace qoraudiofiltersui
