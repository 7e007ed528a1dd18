#include "platform/ui/modal_testing.hpp"

namespace qorui::testing {

namespace {
ModalResponder& Responder() {
    static ModalResponder responder;
    return responder;
}
} // namespace

const ModalResponder& GetModalResponder() {
    return Responder();
}

ScopedModalResponder::ScopedModalResponder(ModalResponder responder)
    : previous_(std::move(Responder())) {
    Responder() = std::move(responder);
}

ScopedModalResponder::~ScopedModalResponder() {
    Responder() = std::move(previous_);
}

} // namespace qorui::testing
