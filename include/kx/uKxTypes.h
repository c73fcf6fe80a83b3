// SPDX-License-Identifier: MIT
#pragma once
// uKxTypes: the type registry, simple types and variant conversion, code pages, the text
// encoding class and Unicode normalisation.

#include <kx/types/CodePage.h>
#include <kx/types/Encoding.h>
#include <kx/types/Normalization.h>
#include <kx/types/SimpleType.h>
#include <kx/types/TypeRegistry.h>
#include <kx/types/TypesConsts.h>
#include <kx/types/VariantConversion.h>
