#pragma once
// A header of the engine that reaches up into the toolkit.
#include "core/name.hpp"
#include "platform/ui/ui_node.hpp"
