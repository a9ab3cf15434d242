# Finds GoogleTest as GTest::gtest, the name that its own package and CMake from 3.20 on have for it.
find_package(GTest REQUIRED)
if(NOT TARGET GTest::gtest)
  add_library(GTest::gtest INTERFACE IMPORTED)
  set_target_properties(GTest::gtest PROPERTIES INTERFACE_LINK_LIBRARIES GTest::GTest)
endif()
