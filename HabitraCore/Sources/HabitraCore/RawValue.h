#pragma once

#include <QZKit/RawValue.h>

/// The tables of raw values under this product's own roof: its enumerations are spoken of without a prefix.
namespace habitra {

using qz::caseName;
using qz::fromCaseName;
using qz::fromRawValue;
using qz::rawValue;
using qz::RawValued;
using qz::rawValueRow;
using qz::RawValueRow;
using qz::RawValueTable;

}  // namespace habitra
