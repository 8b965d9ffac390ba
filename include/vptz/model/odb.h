// The object-relational mapper's headers, made fit for C++17 and later.
//
// One of them declares functions with throw(...), which C++17 has removed. It
// is included here first, with the standard headers that it needs already
// there, while throw(...) stands for the noexcept that means the same: a list
// of exceptions is noexcept(false), an empty one noexcept(true).
#ifndef VPTZ_MODEL_ODB_H
#define VPTZ_MODEL_ODB_H

#if __cplusplus >= 201703L && !defined(ODB_COMPILER)
#include <cstddef>
#include <new>

#include <odb/details/config.hxx>
#include <odb/details/export.hxx>
#include <odb/details/shared-ptr/counter-type.hxx>
#include <odb/pre.hxx>
#ifdef __clang__
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wkeyword-macro"
#endif
#define throw(...) noexcept(sizeof(#__VA_ARGS__) == 1)
#include <odb/details/shared-ptr/base.hxx>
#undef throw
#ifdef __clang__
#pragma clang diagnostic pop
#endif
#include <odb/post.hxx>
#endif

#include <memory>

#include <odb/core.hxx>
#include <odb/lazy-ptr.hxx>

#endif
