#include "PulseConnection.h"

namespace tambrel {

PulseConnection::PulseConnection(const ApplicationNames& names) {
    pa_threaded_mainloop_set_name(loop_.get(), "sound");
    const PulseProperties properties(pa_proplist_new());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_NAME, names.name.c_str());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ID, names.icon.c_str());
    pa_proplist_sets(properties.get(), PA_PROP_APPLICATION_ICON_NAME, names.icon.c_str());
    context_.reset(pa_context_new_with_proplist(api(), nullptr, properties.get()));
    pa_threaded_mainloop_start(loop_.get());
    try {
        connect();
    } catch (...) {
        disconnect();
        throw;
    }
}

PulseConnection::~PulseConnection() {
    disconnect();
}

void PulseConnection::connect() {
    const Lock lock(*this);
    pa_context_set_state_callback(
        context(), [](pa_context*, void* self) { static_cast<PulseConnection*>(self)->wake(); }, this);
    if (pa_context_connect(context(), nullptr, PA_CONTEXT_NOFLAGS, nullptr) < 0)
        fail();
    while (pa_context_get_state(context()) != PA_CONTEXT_READY) {
        if (!PA_CONTEXT_IS_GOOD(pa_context_get_state(context())))
            fail();
        wait();
    }
}

void PulseConnection::disconnect() {
    {
        const Lock lock(*this);
        pa_context_set_state_callback(context(), nullptr, nullptr);
        context_.reset();
    }
    pa_threaded_mainloop_stop(loop_.get());
}

void PulseConnection::fail() const {
    throw AudioDriverError(std::string("pulseaudio: ") + pa_strerror(pa_context_errno(context())));
}

} // namespace tambrel
