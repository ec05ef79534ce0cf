function (doc) {
  // SPDX-FileCopyrightText: 2026 NorvakPackageManager contributors
  // SPDX-License-Identifier: MIT
  //
  // The map function of the view "packages" in the design document "norvak". The kind of a
  // document stands before the colon of its _id; the first element of the key passes it on.
  var kind = doc._id.split(':')[0];
  if (kind === 'package' || kind === 'keyword' || kind === 'link') {
    emit([kind], doc);
  }
}
