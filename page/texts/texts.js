/// All that the page says to people, by the view or the subject that says it. A text with values is a function.

import { common } from "./common.js";
import { list } from "./list.js";
import { many } from "./many.js";
import { one } from "./one.js";

export const texts = { common, list, many, one };
