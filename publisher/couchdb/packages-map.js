function (doc) {
  // SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
  // SPDX-License-Identifier: MIT
  //
  // The map function of the view "packages" in the design document "norvak". The kind of a
  // document stands before the colon of its _id; the first element of the key passes it on.
  // A package without a type is still being uploaded.
  var kind = doc._id.split(':')[0];
  if (kind === 'keyword' || kind === 'link' || (kind === 'package' && 'packageType' in doc)) {
    emit([kind], doc);
  }
}
