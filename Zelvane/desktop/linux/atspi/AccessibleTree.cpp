#include "desktop/linux/atspi/AccessibleTree.h"

#include <algorithm>

namespace zelvane {

namespace {

constexpr char accessibleInterface[] = "org.a11y.atspi.Accessible";
constexpr char rootPath[] = "/org/a11y/atspi/accessible/root";
constexpr char nullPath[] = "/org/a11y/atspi/null";
constexpr char registryName[] = "org.a11y.atspi.Registry";

BusCall childrenOf(const BusObject& object)
{
    return {object, accessibleInterface, "GetChildren", "(a(so))", nullptr};
}

BusCall firstChildOf(const BusObject& object)
{
    return {object, accessibleInterface, "GetChildAtIndex", "((so))",
            busArguments(g_variant_new("(i)", 0))};
}

BusCall statesOf(const BusObject& object)
{
    return {object, accessibleInterface, "GetState", "(au)", nullptr};
}

BusCall roleOf(const BusObject& object)
{
    return {object, accessibleInterface, "GetRole", "(u)", nullptr};
}

std::vector<BusCall> callsFor(const std::vector<BusObject>& objects,
                              BusCall (*callFor)(const BusObject&))
{
    std::vector<BusCall> calls;
    calls.reserve(objects.size());
    std::ranges::transform(objects, std::back_inserter(calls), callFor);
    return calls;
}

GLibOwned<GVariant> member(GVariant& container, gsize index)
{
    return GLibOwned<GVariant>(g_variant_get_child_value(&container, index));
}

/// None for the name of no object, which programs use for "none" in several ways.
std::optional<BusObject> readReference(GVariant& reference)
{
    const char* owner = nullptr;
    const char* path = nullptr;
    g_variant_get(&reference, "(&s&o)", &owner, &path);
    if (!g_dbus_is_name(owner) || std::string_view(path) == nullPath) {
        return std::nullopt;
    }
    return BusObject{owner, path};
}

void appendReferences(GVariant& reply, std::vector<BusObject>& objects)
{
    const GLibOwned<GVariant> list = member(reply, 0);
    const gsize count = g_variant_n_children(list.get());
    for (gsize i = 0; i < count; ++i) {
        if (auto object = readReference(*member(*list, i))) {
            objects.push_back(std::move(*object));
        }
    }
}

/// The set comes as words of 32 bits, the lowest first.
std::uint64_t readStates(GVariant& reply)
{
    constexpr gsize wordBits = 32;
    const GLibOwned<GVariant> words = member(reply, 0);
    const gsize count = std::min<gsize>(g_variant_n_children(words.get()), 2);
    std::uint64_t states = 0;
    for (gsize i = 0; i < count; ++i) {
        states |= std::uint64_t{g_variant_get_uint32(member(*words, i).get())} << (wordBits * i);
    }
    return states;
}

std::uint32_t readRole(GVariant& reply)
{
    return g_variant_get_uint32(member(reply, 0).get());
}

} // namespace

AccessibleTree::AccessibleTree(BusConnection& bus)
    : m_bus(bus)
{
}

BusObject AccessibleTree::rootOf(const BusObject& object)
{
    return {object.owner, rootPath};
}

std::vector<BusObject> AccessibleTree::programs(Moment deadline)
{
    return children({{registryName, rootPath}}, deadline);
}

std::vector<BusObject> AccessibleTree::children(const std::vector<BusObject>& objects,
                                                Moment deadline, Embedded embedded)
{
    const auto replies = m_bus.callAll(callsFor(objects, childrenOf), deadline);
    std::vector<BusObject> found;
    std::vector<BusObject> childless;
    for (std::size_t i = 0; i < replies.size(); ++i) {
        const auto before = found.size();
        if (replies[i]) {
            appendReferences(*replies[i], found);
        }
        if (found.size() == before) {
            childless.push_back(objects[i]);
        }
    }
    if (embedded == Embedded::include) {
        std::ranges::move(firstChildren(childless, deadline), std::back_inserter(found));
    }
    return found;
}

std::vector<BusObject> AccessibleTree::firstChildren(const std::vector<BusObject>& objects,
                                                     Moment deadline)
{
    std::vector<BusObject> found;
    for (const auto& reply : m_bus.callAll(callsFor(objects, firstChildOf), deadline)) {
        if (!reply) {
            continue;
        }
        if (auto child = readReference(*member(*reply, 0))) {
            found.push_back(std::move(*child));
        }
    }
    return found;
}

std::optional<BusObject> AccessibleTree::parent(const BusObject& object, Moment deadline)
{
    const auto reply =
        m_bus.call({object, "org.freedesktop.DBus.Properties", "Get", "(v)",
                    busArguments(g_variant_new("(ss)", accessibleInterface, "Parent"))},
                   deadline);
    if (!reply) {
        return std::nullopt;
    }
    const GLibOwned<GVariant> value(g_variant_get_variant(member(*reply, 0).get()));
    if (!g_variant_is_of_type(value.get(), G_VARIANT_TYPE("(so)"))) {
        return std::nullopt;
    }
    return readReference(*value);
}

std::vector<AccessibleTree::Node> AccessibleTree::nodes(const std::vector<BusObject>& objects,
                                                        Moment deadline, std::uint64_t enough)
{
    const auto replies =
        m_bus.callAll(callsFor(objects, statesOf), deadline, [enough](GVariant& reply) {
            return enough != 0 && (readStates(reply) & enough) == enough;
        });
    std::vector<Node> found;
    for (std::size_t i = 0; i < replies.size(); ++i) {
        if (replies[i]) {
            found.push_back({objects[i], readStates(*replies[i])});
        }
    }
    return found;
}

std::optional<std::uint64_t> AccessibleTree::states(const BusObject& object, Moment deadline)
{
    const auto reply = m_bus.call(statesOf(object), deadline);
    return reply ? std::optional(readStates(*reply)) : std::nullopt;
}

std::optional<AccessibleTree::Description> AccessibleTree::describe(const BusObject& object,
                                                                    Moment deadline)
{
    const auto replies = m_bus.callAll({statesOf(object), roleOf(object)}, deadline);
    if (!replies[0] || !replies[1]) {
        return std::nullopt;
    }
    return Description{.role = readRole(*replies[1]), .states = readStates(*replies[0])};
}

} // namespace zelvane
