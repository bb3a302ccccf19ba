#include <gtest/gtest.h>

#include "orxFunctions/orxfunctions.h"

namespace {

struct Camera : orx::TClassBase {
    int number = 0;
};

std::string received;
int voidCalls = 0;

int subtract(int a, int b) { return a - b; }
int multiply(int a, int b) { return a * b; }
void receive(std::string text) { received = text; }
void countCall() { ++voidCalls; }

TEST(TAppSys, FirstRegistrationWinsUntilItIsRemoved) {
    orx::TAppSys registry;
    Camera first;
    Camera second;
    registry.Register("cam", &first);
    registry.Register("cam", &second);
    EXPECT_EQ(registry.suport("cam"), &first);
    registry.UnRegister("cam");
    EXPECT_EQ(registry.suport("cam"), nullptr);
    registry.Register("cam", &second);
    EXPECT_EQ(registry.suport("cam"), &second);
    registry.Register("cam", nullptr);
    EXPECT_EQ(registry.suport("cam"), nullptr);
}

TEST(TAppSys, NamesAreComparedByteByByte) {
    orx::TAppSys registry;
    Camera camera;
    registry.Register("Cam", &camera);
    EXPECT_EQ(registry.suport("cam"), nullptr);
    EXPECT_EQ(registry.suport("Cam "), nullptr);
}

TEST(TAppSys, OneNameMayStandInAllFourMaps) {
    orx::TAppSys registry;
    Camera camera;
    registry.Register("x", &camera);
    registry.RegisterFunc("x", subtract);
    registry.RegisterFunc("x", receive);
    registry.RegisterFunc("x", countCall);

    int result = 0;
    ASSERT_TRUE(registry.callFunc("x", 9, 4, result));
    EXPECT_EQ(result, 5);
    registry.callFunc("x", std::string("hello"));
    EXPECT_EQ(received, "hello");
    const int before = voidCalls;
    registry.callFunc("x");
    EXPECT_EQ(voidCalls, before + 1);
    EXPECT_EQ(registry.suport("x"), &camera);
}

TEST(TAppSys, AFunctionOnceRegisteredIsKept) {
    orx::TAppSys registry;
    registry.RegisterFunc("op", subtract);
    registry.RegisterFunc("op", multiply);
    registry.UnRegister("op");
    int result = 0;
    ASSERT_TRUE(registry.callFunc("op", 9, 4, result));
    EXPECT_EQ(result, 5);
}

TEST(TAppSys, UnknownNamesLeaveTheResultAlone) {
    orx::TAppSys registry;
    int result = 77;
    EXPECT_FALSE(registry.callFunc("none", 1, 2, result));
    EXPECT_EQ(result, 77);
    registry.callFunc("none", std::string("text"));
    registry.callFunc("none");
    EXPECT_EQ(registry.suport("none"), nullptr);
}

TEST(TAppSys, CopiesShareTheObjectsAndAssignmentToSelfIsHarmless) {
    orx::TAppSys registry;
    Camera camera;
    registry.Register("cam", &camera);
    registry.RegisterFunc("op", subtract);
    orx::TAppSys copy(registry);
    orx::TAppSys assigned;
    assigned = copy;
    assigned = *&assigned;
    EXPECT_EQ(assigned.suport("cam"), &camera);
    int result = 0;
    EXPECT_TRUE(assigned.callFunc("op", 3, 1, result));
    copy.UnRegister("cam");
    EXPECT_EQ(assigned.suport("cam"), &camera);
    EXPECT_EQ(registry.suport("cam"), &camera);
}

void callTheIntFunctionOfTheOtherMap() {
    int result = 0;
    if (orx::appSys.callFunc("registry_test.subtract", 5, 3, result)) voidCalls += result;
}

TEST(TAppSys, AFunctionMayCallOneOfAnotherMap) {
    orx::appSys.RegisterFunc("registry_test.subtract", subtract);
    orx::appSys.RegisterFunc("registry_test.call", callTheIntFunctionOfTheOtherMap);
    const int before = voidCalls;
    orx::appSys.callFunc("registry_test.call");
    EXPECT_EQ(voidCalls, before + 2);
}

}  // namespace
