#include "CUiComponent.h"

CUiComponent::CUiComponent() = default;
CUiComponent::~CUiComponent() = default;
