#include "ink/color_vocabulary.h"
