#include "CCoreBase.h"

CCoreBase::CCoreBase() = default;
CCoreBase::~CCoreBase() = default;
