// libmpv, loaded when the first movie is. With it come some two hundred other libraries, which would double
// the time until a window shows, and its memory, for as long as there is nothing to play. So the program is
// not linked with it: these are its functions, and each calls the one of that name in the library.
#include "Diagnostics/Log.h"

#include <dlfcn.h>
#include <mpv/client.h>
#include <mpv/render.h>

namespace {

using namespace Qt::StringLiterals;

void* library() {
    static void* const opened = [] {
        void* const found = dlopen("libmpv.so.2", RTLD_NOW | RTLD_LOCAL);
        if (!found) velmora::logger().error(u"player: "_s + QString::fromLocal8Bit(dlerror()));
        return found;
    }();
    return opened;
}

template <class Function>
Function* find(const char* name) {
    return library() ? reinterpret_cast<Function*>(dlsym(library(), name)) : nullptr;
}

// Without the library there is no handle, so that only `mpv_create` can be called then.
#define REAL(function)                                                 \
    ([] {                                                              \
        static auto* const real = find<decltype(function)>(#function); \
        return real;                                                   \
    }())

}  // namespace

extern "C" {

mpv_handle* mpv_create() {
    return REAL(mpv_create) ? REAL(mpv_create)() : nullptr;
}

int mpv_initialize(mpv_handle* handle) {
    return REAL(mpv_initialize)(handle);
}

void mpv_terminate_destroy(mpv_handle* handle) {
    REAL(mpv_terminate_destroy)(handle);
}

const char* mpv_error_string(int error) {
    return REAL(mpv_error_string)(error);
}

int mpv_request_log_messages(mpv_handle* handle, const char* level) {
    return REAL(mpv_request_log_messages)(handle, level);
}

void mpv_set_wakeup_callback(mpv_handle* handle, void (*wake)(void* context), void* context) {
    REAL(mpv_set_wakeup_callback)(handle, wake, context);
}

mpv_event* mpv_wait_event(mpv_handle* handle, double timeout) {
    return REAL(mpv_wait_event)(handle, timeout);
}

int mpv_command_async(mpv_handle* handle, uint64_t reply, const char** words) {
    return REAL(mpv_command_async)(handle, reply, words);
}

int mpv_set_option_string(mpv_handle* handle, const char* name, const char* value) {
    return REAL(mpv_set_option_string)(handle, name, value);
}

int mpv_set_property_string(mpv_handle* handle, const char* name, const char* value) {
    return REAL(mpv_set_property_string)(handle, name, value);
}

int mpv_set_property_async(mpv_handle* handle, uint64_t reply, const char* name, mpv_format format,
                           void* value) {
    return REAL(mpv_set_property_async)(handle, reply, name, format, value);
}

int mpv_get_property_async(mpv_handle* handle, uint64_t reply, const char* name, mpv_format format) {
    return REAL(mpv_get_property_async)(handle, reply, name, format);
}

int mpv_observe_property(mpv_handle* handle, uint64_t reply, const char* name, mpv_format format) {
    return REAL(mpv_observe_property)(handle, reply, name, format);
}

int mpv_render_context_create(mpv_render_context** context, mpv_handle* handle,
                              mpv_render_param* parameters) {
    return REAL(mpv_render_context_create)(context, handle, parameters);
}

void mpv_render_context_set_update_callback(mpv_render_context* context, mpv_render_update_fn update,
                                            void* user) {
    REAL(mpv_render_context_set_update_callback)(context, update, user);
}

uint64_t mpv_render_context_update(mpv_render_context* context) {
    return REAL(mpv_render_context_update)(context);
}

int mpv_render_context_render(mpv_render_context* context, mpv_render_param* parameters) {
    return REAL(mpv_render_context_render)(context, parameters);
}

void mpv_render_context_report_swap(mpv_render_context* context) {
    REAL(mpv_render_context_report_swap)(context);
}

void mpv_render_context_free(mpv_render_context* context) {
    REAL(mpv_render_context_free)(context);
}

}  // extern "C"
