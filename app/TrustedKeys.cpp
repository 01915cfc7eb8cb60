#include "app/TrustedKeys.h"

#include "BuiltInKey.h"
#include "webupdate/PackageSignature.h"
#include "webupdate/Release.h"

namespace tarnwick {

void TrustBuiltInKeys() {
  const auto key = ReadPublicKey(kBuiltInKey);
  if (!key) return;
  TrustKey(*key);
  TrustPackageKey(*key);
}

}  // namespace tarnwick
