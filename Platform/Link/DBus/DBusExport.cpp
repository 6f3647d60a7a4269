#include "Platform/Link/DBus/DBusExport.h"

#include "Platform/Link/DBus/DBusWire.h"

#include <string>
#include <string_view>
#include <utility>

namespace velloren {

namespace {

using Result = ExportedInterface::Result;

std::string_view signatureOf(Result result) {
    switch (result) {
    case Result::Boolean:
        return "b";
    case Result::Text:
        return "s";
    case Result::Dictionaries:
        return "v";
    case Result::Nothing:
        break;
    }
    return {};
}

std::string introspectionOf(const ExportedInterface& interface) {
    std::string text = "<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\"\n"
                       " \"http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd\">\n<node>\n"
                       " <interface name=\"" +
                       interface.name + "\">\n";
    for (const auto& [name, method] : interface.methods) {
        text += "  <method name=\"" + name + "\">\n";
        for (std::size_t index = 0; index < method.argumentCount; ++index)
            text += "   <arg type=\"s\" direction=\"in\"/>\n";
        if (const auto signature = signatureOf(method.result); !signature.empty())
            text += "   <arg type=\"" + std::string(signature) + "\" direction=\"out\"/>\n";
        text += "  </method>\n";
    }
    return text + " </interface>\n</node>\n";
}

void answer(sd_bus_message& call, Result result, const Value& value) {
    sd_bus_message* made = nullptr;
    if (sd_bus_message_get_expect_reply(&call) <= 0 || sd_bus_message_new_method_return(&call, &made) < 0)
        return;
    const wire::Message reply(made);
    if (wire::append(*reply, result, value))
        sd_bus_send(nullptr, reply.get(), nullptr);
    else
        sd_bus_reply_method_errorf(&call, SD_BUS_ERROR_FAILED, "the answer cannot be sent");
}

} // namespace

DBusExport::DBusExport(ExportedInterface interface, AfterAnswer afterAnswer)
    : interface(std::move(interface)), afterAnswer(std::move(afterAnswer)) {}

DBusExport::~DBusExport() {
    sd_bus_slot_unref(slot);
}

std::unique_ptr<DBusExport> DBusExport::serve(sd_bus* bus, ExportedInterface interface,
                                              AfterAnswer afterAnswer) {
    std::unique_ptr<DBusExport> served(new DBusExport(std::move(interface), std::move(afterAnswer)));
    const int added = sd_bus_add_object(bus, &served->slot, served->interface.objectPath.c_str(),
                                        &DBusExport::received, served.get());
    return added < 0 ? nullptr : std::move(served);
}

int DBusExport::received(sd_bus_message* call, void* self, sd_bus_error* error) {
    return static_cast<DBusExport*>(self)->receive(*call, *error);
}

int DBusExport::receive(sd_bus_message& call, sd_bus_error& error) {
    if (sd_bus_message_is_method_call(&call, "org.freedesktop.DBus.Introspectable", "Introspect") > 0)
        return introspect(call);
    const char* member = sd_bus_message_get_member(&call);
    const auto found = member ? interface.methods.find(member) : interface.methods.end();
    if (found == interface.methods.end() ||
        sd_bus_message_is_method_call(&call, interface.name.c_str(), member) <= 0)
        return 0;
    const auto& method = found->second;
    const auto arguments = wire::textsOf(call, method.argumentCount);
    if (!arguments)
        return sd_bus_error_set(&error, SD_BUS_ERROR_INVALID_ARGS, "this method takes other arguments");

    const std::shared_ptr<sd_bus_message> kept(sd_bus_message_ref(&call), wire::Release());
    method.handler(*arguments, [kept, result = method.result, after = afterAnswer](const Value& value) {
        answer(*kept, result, value);
        if (after)
            after();
    });
    return 1;
}

int DBusExport::introspect(sd_bus_message& call) const {
    return sd_bus_reply_method_return(&call, "s", introspectionOf(interface).c_str());
}

} // namespace velloren
