// The page: one or more telephones side by side, and the tools for the chosen ones.
import { html, render, useLayoutEffect, useReducer, useState } from "./preact.mjs";
import { follow, panelIsThere, phones, subscribe } from "./feed.mjs";
import { Coming } from "./coming.mjs";
import { Journal } from "./journal.mjs";
import { Buttons } from "./parts.mjs";
import { Passing } from "./passing.mjs";
import { Scenarios } from "./scenarios.mjs";
import { Settings } from "./settings.mjs";
import { Telephone } from "./telephone.mjs";
import { World } from "./world.mjs";
import { Year } from "./year.mjs";

const ALL = -1;

const isReady = (phone) =>
  phone.status && phone.keys && phone.upcoming && phone.history && phone.security;

function Chooser({ chosen, choose }) {
  if (phones.length < 2) return null;
  const rows = [...phones.map((phone) => [phone.number, `telephone ${phone.number + 1}`]), [ALL, "all"]];
  return html`<${Buttons} label="Telephones that the tools work on" rows=${rows} pressed=${chosen} act=${choose} />`;
}

function Page() {
  const [, draw] = useReducer((count) => count + 1, 0);
  const [chosen, choose] = useState(0);
  useLayoutEffect(() => subscribe(draw), []); // before the first frame, in which all may come
  const ready = phones.filter(isReady);
  const tools = ready.filter((phone) => chosen === ALL || phone.number === chosen);
  const [first] = tools;
  return html`
    <header>
      <h1>Telephone clock</h1>
      ${panelIsThere ? null : html`<p role="alert" class="missing">The panel is gone. If it does not come back,
        ${" "}start it again, and open the address that it prints.</p>`}
    </header>
    <main>
      <div class="telephones">
        ${phones.filter((phone) => !phone.attached?.attached).map((phone) => html`<p role="alert" class="missing">
          Telephone ${phone.number + 1} is not there: ${phone.attached?.why ?? "looking for it"}</p>`)}
        ${ready.map((phone) => html`<${Telephone} key=${phone.number} phone=${phone} />`)}
      </div>
      <${Chooser} chosen=${chosen} choose=${choose} />
      ${first ? html`<div class="tools" key=${chosen}>
        <div>
          <${Passing} phones=${tools} />
          <${Year} phone=${first} />
          <${Coming} phone=${first} />
          <${Journal} phone=${first} />
          <${Scenarios} phone=${first} />
        </div>
        <div>
          <${Settings} phones=${tools} />
          <${World} phones=${tools} />
        </div>
      </div>` : null}
    </main>`;
}

render(html`<${Page} />`, document.body);
follow();
