#include "framework/exports.hpp"

#include "framework/library.hpp"

extern "C" {

void UIBuilderInitialize(const qorui::penrig::SupplierInterface* supplier) {
    qoraudiofiltersui::Initialize(supplier);
}

void UIBuilderTerminate() {
    qoraudiofiltersui::Terminate();
}

const qoraudiofiltersui::ClientAdapterFactory* GetAdapterFactory() {
    return qoraudiofiltersui::GetLibraryAdapterFactory();
}

void GetAvailableWidgetNames(std::vector<vorlen::name_t>& names) {
    qoraudiofiltersui::AppendAvailableWidgetNames(names);
}
}
