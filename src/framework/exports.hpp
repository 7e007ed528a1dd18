#pragma once

#include "core/name.hpp"
#include "framework/adapter_factory.hpp"
#include "platform/draw/supplier_interface.hpp"

#include <vector>

// The entry points a host finds in the library by their plain names.
extern "C" {
__attribute__((visibility("default"))) void
UIBuilderInitialize(const qorui::penrig::SupplierInterface* supplier);
__attribute__((visibility("default"))) void UIBuilderTerminate();
__attribute__((visibility("default"))) const qoraudiofiltersui::ClientAdapterFactory*
GetAdapterFactory();
__attribute__((visibility("default"))) void
GetAvailableWidgetNames(std::vector<vorlen::name_t>& names);
}
