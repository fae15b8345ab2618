// Small services for texts: conversion, XML escaping, UTF-8.
#ifndef XDM_TEXT_H
#define XDM_TEXT_H

#include <kvxbase/kvbstring.h>

#include <optional>
#include <string>
#include <string_view>

std::string toStd(const KvbString& text);
KvbString toKvb(std::string_view text);

/** `text` as the content of an element: markup escaped, and carriage returns too, which a parser would change. */
std::string escapeXml(std::string_view text);

/** The position of the first byte that is not UTF-8; none when all of `text` is. */
std::optional<std::size_t> findNonUtf8(std::string_view text);

/** The first character of `text`, which is UTF-8, that XML 1.0 forbids. */
std::optional<char32_t> findForbidden(std::string_view text);

/** The number of characters of UTF-8 `text`. */
std::size_t characters(std::string_view text);

/** `text` with all `what` replaced. */
std::string replaced(std::string text, std::string_view what, std::string_view with);

/** The name without its prefix. */
std::string_view localName(std::string_view name);

#endif
