// What the tests of the built module share.
#pragma once

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>

#include "plugin/module.h"

namespace atdp {

// The module as a host has it: loaded, looked up by name, nothing linked.
class ModuleTest : public ::testing::Test {
 protected:
    void SetUp() override {
        module_ = dlopen(ATDP_MODULE_PATH, RTLD_NOW | RTLD_LOCAL);
        ASSERT_NE(module_, nullptr) << dlerror();
        entry_ = reinterpret_cast<ModuleEntry>(dlsym(module_, kModuleEntryName));
        ASSERT_NE(entry_, nullptr);
        principal_ = entry_(1);
        ASSERT_NE(principal_, nullptr);
    }

    void TearDown() override {
        if (module_ != nullptr) dlclose(module_);
    }

    std::unique_ptr<PluginProtocol> makePlugin() const {
        return principal_->initWithKey("3B9C61F0-5A2E-4D87-8E14-C2A7F05D9B63");
    }

    void* module_ = nullptr;
    ModuleEntry entry_ = nullptr;
    const PrincipalClass* principal_ = nullptr;
};

}  // namespace atdp
