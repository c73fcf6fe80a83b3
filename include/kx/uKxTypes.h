#pragma once
// uKxTypes: code pages, the text encoding class and Unicode normalisation.

#include <kx/types/CodePage.h>
#include <kx/types/Encoding.h>
#include <kx/types/Normalization.h>
#include <kx/types/TypesConsts.h>
