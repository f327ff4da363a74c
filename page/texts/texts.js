/// All that the page says to people, by the view or the subject that says it. A text with values is a function.

import { add } from "./add.js";
import { banners } from "./banners.js";
import { camera, cameras } from "./cameras.js";
import { causes } from "./causes.js";
import { changes } from "./changes.js";
import { common } from "./common.js";
import { list } from "./list.js";
import { login } from "./login.js";
import { many } from "./many.js";
import { models } from "./models.js";
import { navigation } from "./navigation.js";
import { notices } from "./notices.js";
import { one } from "./one.js";
import { recorder } from "./recorder.js";
import { saving } from "./saving.js";
import { sources } from "./sources.js";

export const texts = {
  add,
  banners,
  camera,
  cameras,
  causes,
  changes,
  common,
  list,
  login,
  many,
  models,
  navigation,
  notices,
  one,
  recorder,
  saving,
  sources,
};
