#include "lua_peer.h"

#include <lua.hpp>

namespace brenta::bench {
namespace {

using State = std::unique_ptr<lua_State, decltype(&lua_close)>;

struct HostObject {
    double value = 0;
};

HostObject& ObjectAt(lua_State* state) {
    return *static_cast<HostObject*>(luaL_checkudata(state, 1, "Host"));
}

int GetMember(lua_State* state) {
    const std::string name = luaL_checkstring(state, 2);
    if (name == "value") {
        lua_pushnumber(state, ObjectAt(state).value);
    } else {
        luaL_getmetatable(state, "Host");
        lua_getfield(state, -1, name.c_str());
    }
    return 1;
}

int SetMember(lua_State* state) {
    ObjectAt(state).value = luaL_checknumber(state, 3);
    return 0;
}

int AddMethod(lua_State* state) {
    lua_pushnumber(state, ObjectAt(state).value + luaL_checknumber(state, 2));
    return 1;
}

/// A userdata with a property "value" and a method "Add", all through C functions, as the global `host`.
void AddHostObject(lua_State* state) {
    new (lua_newuserdatauv(state, sizeof(HostObject), 0)) HostObject;
    luaL_newmetatable(state, "Host");
    const luaL_Reg methods[] = {
        {"__index", GetMember}, {"__newindex", SetMember}, {"Add", AddMethod}, {nullptr, nullptr}};
    luaL_setfuncs(state, methods, 0);
    lua_setmetatable(state, -2);
    lua_setglobal(state, "host");
}

State MakeState(const std::string& source) {
    State state(luaL_newstate(), &lua_close);
    luaL_openlibs(state.get());
    AddHostObject(state.get());
    if (luaL_loadbuffer(state.get(), source.data(), source.size(), "bench") != LUA_OK ||
        lua_pcall(state.get(), 0, 0, 0) != LUA_OK) {
        lua_pop(state.get(), 1);
    }
    return state;
}

class LuaContender : public Contender {
 public:
    explicit LuaContender(const std::string& source) : m_state(MakeState(source)) {}

    std::string Run() override {
        lua_getglobal(m_state.get(), "Main");
        if (lua_pcall(m_state.get(), 0, 1, 0) != LUA_OK) return TakeTop("error: ");
        return TakeTop("");
    }

 private:
    /// Whole floats are written as integers, as this library does.
    std::string TakeTop(const std::string& prefix) {
        int isInteger = 0;
        const lua_Integer integer = lua_tointegerx(m_state.get(), -1, &isInteger);
        if (isInteger != 0) lua_pushinteger(m_state.get(), integer);
        const std::string text = luaL_tolstring(m_state.get(), -1, nullptr);
        lua_settop(m_state.get(), 0);
        return prefix + text;
    }

    State m_state;
};

class LuaLoader : public Contender {
 public:
    explicit LuaLoader(std::string source) : m_source(std::move(source)) {}
    std::string Run() override {
        const State state(luaL_newstate(), &lua_close);
        const bool good = luaL_loadbuffer(state.get(), m_source.data(), m_source.size(), "bench") == LUA_OK;
        return good && lua_pcall(state.get(), 0, 0, 0) == LUA_OK ? "loaded" : "failed";
    }

 private:
    std::string m_source;
};

}  // namespace

std::unique_ptr<Contender> MakeLuaContender(const std::string& source) {
    return std::make_unique<LuaContender>(source);
}

std::unique_ptr<Contender> MakeLuaLoader(const std::string& source) {
    return std::make_unique<LuaLoader>(source);
}

}  // namespace brenta::bench
